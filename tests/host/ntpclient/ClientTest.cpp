// The client in this process, with waits that are noted and take no time.

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
enum class Reply { none, time, slower };

// Notes each wait between two requests, to the second, and ends the client after the last one. A
// wait for an answer that does not come ends at once.
class NotingWatch : public ParentWatch {
 public:
  explicit NotingWatch(const std::vector<Reply>& replies) : m_replies(replies) {}

  [[nodiscard]] Event wait(Deadline deadline, int descriptor) const override {
    if (descriptor >= 0 && m_replies[m_waits.size()] == Reply::none) return Event::timeout;
    const auto time = std::chrono::round<std::chrono::seconds>(deadline - Clock::now());
    if (descriptor >= 0 || time < kShortest) return ParentWatch::wait(deadline, descriptor);
    m_waits.push_back(time);
    return m_waits.size() < m_replies.size() ? Event::timeout : Event::parentGone;
  }
  [[nodiscard]] const Waits& waits() const { return m_waits; }  // afterwards

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr auto kShortest = 10s;  // the wait for a listener is shorter

  const std::vector<Reply>& m_replies;
  mutable Waits m_waits;
};

class NotedClock : public ClockSetter {
 public:
  void set(std::chrono::nanoseconds /*sinceEpoch*/) override { ++settings; }

  int settings = 0;
};

class NtpClient : public testing::Test {
 protected:
  // The waits of a client whose server replies in this way, one after each reply.
  Waits waitsAfter(const std::vector<Reply>& replies) {
    const NotingWatch watch(replies);
    Environment environment;
    environment.port = m_server.port();
    environment.pipe = "/nowhere/pipe";
    environment.answerLimit = kLong;
    environment.reportLimit = 1ms;
    Client client({"127.0.0.1", AF_INET, false}, environment, watch, m_clock);
    auto status = std::async(std::launch::async, [&] { return client.run(); });
    for (const Reply reply : replies) answer(reply);
    EXPECT_EQ(status.get(), 0);
    return watch.waits();
  }

  void answer(Reply reply) {
    const auto request = m_server.receive();
    ASSERT_TRUE(request);
    if (reply == Reply::time) m_server.answer(answerTo(nonceOf(*request), kTime));
    if (reply == Reply::slower) m_server.answer(kissOfDeath(nonceOf(*request), "RATE"));
  }

  FakeSntpServer m_server;
  NotedClock m_clock;
};

TEST_F(NtpClient, AsksASilentServerLessAndLessOften) {
  EXPECT_EQ(waitsAfter({Reply::none, Reply::none, Reply::none}), (Waits{15s, 30s, 60s}));
  EXPECT_EQ(m_clock.settings, 0);
}

TEST_F(NtpClient, WaitsAnHourAfterASuccess) {
  EXPECT_EQ(waitsAfter({Reply::time, Reply::time}), (Waits{3600s, 3600s}));
  EXPECT_EQ(m_clock.settings, 2);
}

TEST_F(NtpClient, GoesOnMoreSlowlyWhenTheServerAsksForIt) {
  EXPECT_EQ(waitsAfter({Reply::slower, Reply::time, Reply::none, Reply::slower}),
            (Waits{60s, 3600s, 60s, 240s}));
}

TEST_F(NtpClient, StartsAgainWithTheShortestWaitAfterASuccess) {
  EXPECT_EQ(waitsAfter({Reply::none, Reply::none, Reply::time, Reply::none, Reply::none}),
            (Waits{15s, 30s, 3600s, 15s, 30s}));
}

TEST_F(NtpClient, EndsARoundAfterItsTries) {
  const std::vector<Reply> silence(kTries + 1, Reply::none);
  const Waits waits = waitsAfter(silence);
  ASSERT_EQ(waits.size(), silence.size());
  EXPECT_EQ(waits[kTries - 2], Backoff::kMost);
  EXPECT_EQ(waits[kTries - 1], kInterval);
  EXPECT_EQ(waits[kTries], Backoff::kMost);
}

}  // namespace
}  // namespace host::ntp
