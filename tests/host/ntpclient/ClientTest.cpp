// The client in this process, with waits that are recorded and take no time.

#include "ntpclient/Client.h"

#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "host/ntpclient/FakeSntpServer.h"

namespace host::ntp {
namespace {

using namespace std::chrono_literals;
using Waits = std::vector<std::chrono::seconds>;

// What the server does with a request.
enum class Reply { none, time, unsynchronised, slower, denied };

// Records each wait between two requests, in seconds, and ends the client after the last one. Does
// not wait for an answer that will not come.
class RecordingWatch : public ParentWatch {
 public:
  explicit RecordingWatch(const std::vector<Reply>& replies) : m_replies(replies) {}

  [[nodiscard]] Event wait(Deadline deadline, int descriptor) const override {
    const Reply reply = m_replies.at(m_waits.size());
    if (descriptor >= 0 && (reply == Reply::none || m_answered > m_waits.size())) {
      return Event::timeout;
    }
    const auto time = std::chrono::round<std::chrono::seconds>(deadline - Clock::now());
    if (descriptor >= 0) m_answered = m_waits.size() + 1;
    if (descriptor >= 0 || time < kShortest) return ParentWatch::wait(deadline, descriptor);
    m_waits.push_back(time);
    return m_waits.size() < m_replies.size() ? Event::timeout : Event::parentGone;
  }
  [[nodiscard]] const Waits& waits() const { return m_waits; }  // REQUIRES: the client has ended

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr auto kShortest = 10s;  // the wait for a listener is shorter

  const std::vector<Reply>& m_replies;
  mutable Waits m_waits;
  mutable std::size_t m_answered = 0;  // requests
};

// How a client ended.
struct Ending {
  int status;
  Waits waits;
  std::string errors;
};

class NtpClient : public testing::Test {
 protected:
  // Runs a client whose server replies in this way, with a wait after each reply.
  Ending run(const std::vector<Reply>& replies) {
    const RecordingWatch watch(replies);
    Environment environment;
    environment.port = m_server.port();
    environment.pipe = m_pipe;
    environment.answerLimit = kLong;
    environment.reportLimit = 1ms;
    testing::internal::CaptureStderr();
    Client client({"127.0.0.1", AF_INET, m_verbose}, environment, watch, m_setClock);
    auto status = std::async(std::launch::async, [&] { return client.run(); });
    for (const Reply reply : replies) answer(reply);
    const int ended = status.get();
    return {ended, watch.waits(), testing::internal::GetCapturedStderr()};
  }

  void answer(Reply reply) {
    const std::uint64_t nonce = nonceOf(m_server.receive());
    Bytes packet = answerTo(nonce, kTime);
    if (reply == Reply::unsynchronised) packet[0] |= 3 << 6;
    if (reply == Reply::slower) packet = kissOfDeath(nonce, "RATE");
    if (reply == Reply::denied) packet = kissOfDeath(nonce, "DENY");
    if (reply != Reply::none) m_server.answer(packet);
  }

  FakeSntpServer m_server;
  const char* m_pipe = "/nowhere/pipe";
  bool m_verbose = false;
  int m_settings = 0;
  SetClock m_setClock = [this](auto) { ++m_settings; };
};

TEST_F(NtpClient, WaitsBetweenRequestsAsTheServerReplies) {
  const struct {
    std::vector<Reply> replies;
    Waits waits;
    int settings;
  } rows[] = {
      {{Reply::none, Reply::none, Reply::none}, {15s, 30s, 60s}, 0},
      {{Reply::unsynchronised, Reply::time}, {15s, 3600s}, 1},
      {{Reply::time, Reply::time}, {3600s, 3600s}, 2},
      {{Reply::slower, Reply::time, Reply::none, Reply::slower}, {60s, 3600s, 60s, 240s}, 1},
      {{Reply::none, Reply::none, Reply::time, Reply::none, Reply::none},
       {15s, 30s, 3600s, 15s, 30s},
       1},
  };
  for (const auto& [replies, waits, settings] : rows) {
    m_settings = 0;
    const Ending ending = run(replies);
    EXPECT_EQ(ending.status, 0);
    EXPECT_EQ(ending.waits, waits);
    EXPECT_EQ(m_settings, settings);
  }
}

TEST_F(NtpClient, EndsARoundAfterItsTries) {
  const std::vector<Reply> silence(kTries + 1, Reply::none);
  const Waits waits = run(silence).waits;
  ASSERT_EQ(waits.size(), silence.size());
  EXPECT_EQ(waits[kTries - 2], Backoff::kMost);
  EXPECT_EQ(waits[kTries - 1], kInterval);
  EXPECT_EQ(waits[kTries], Backoff::kMost);
}

TEST_F(NtpClient, EndsWhenTheServerDeniesService) {
  const Ending ending = run({Reply::denied});
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.errors, "ntpclient: answer ignored: the server denies service\n");
}

TEST_F(NtpClient, EndsWhenItsHostIsGone) {
  m_setClock = [](auto) { throw ChannelClosed("the host is gone"); };
  const Ending ending = run({Reply::time});
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.errors, "ntpclient: the host is gone\n");
}

TEST_F(NtpClient, ReportsOnlyAClockThatWasSet) {
  m_verbose = true;
  m_setClock = [this](auto) {
    if (++m_settings == 1) throw Error("the host refused");
  };
  const Ending ending = run({Reply::time, Reply::time});
  EXPECT_EQ(ending.waits, (Waits{15s, 3600s}));
  EXPECT_EQ(ending.errors,
            "ntpclient: asking\nntpclient: the host refused\n"
            "ntpclient: asking\nntpclient: clock set\nntpclient: no process reads /nowhere/pipe\n");
}

TEST_F(NtpClient, ReportsAFileThatIsNoPipe) {
  m_pipe = "/dev/null";
  EXPECT_EQ(run({Reply::time}).errors, "ntpclient: /dev/null is not a named pipe\n");
}

}  // namespace
}  // namespace host::ntp
