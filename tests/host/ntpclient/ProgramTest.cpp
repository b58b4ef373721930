// The program as the service runs it: a fake time server, the host's control socket, a pipe.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <mutex>
#include <nlohmann/json.hpp>
#include <vector>

#include "host/ntpclient/ChildProgram.h"
#include "host/ntpclient/FakeSntpServer.h"
#include "host/remote/ServerUnderTest.h"
#include "ntpclient/CommandLine.h"

namespace host::ntp {
namespace {

using Strings = std::vector<std::string>;

Strings commandLine(Strings rest) {
  Strings words = {NTPCLIENT_PROGRAM, "-s", "-c", "525600", "-i", "3600", "-n", "15", "-h"};
  words.insert(words.end(), rest.begin(), rest.end());
  return words;
}

// A host whose clock takes what it is told, or refuses; keeps the requests.
class FakeClock {
 public:
  [[nodiscard]] ControlHandler handler() {
    return [this](const ControlRequest& request) {
      const std::lock_guard lock(m_mutex);
      m_requests.push_back(nlohmann::json::parse(request.text));
      request.channel->item("{}");
      request.channel->reply(m_answer);
    };
  }
  void answerWith(const std::string& json) {
    const std::lock_guard lock(m_mutex);
    m_answer = json;
  }
  [[nodiscard]] std::vector<nlohmann::json> requests() {
    const std::lock_guard lock(m_mutex);
    return m_requests;
  }

 private:
  std::mutex m_mutex;
  std::string m_answer = "{\"ok\":true}";
  std::vector<nlohmann::json> m_requests;
};

class ClientProgram : public testing::Test {
 protected:
  ClientProgram() { EXPECT_EQ(::mkfifo(m_pipe.c_str(), 0600), 0); }

  [[nodiscard]] Strings environment() const {
    return {"CLOCKHOST_SOCKET=" + m_host.socket.string(), "CLOCKHOST_PIPE=" + m_pipe.string(),
            "NTPCLIENT_PORT=" + m_server.port(), "NTPCLIENT_RETRY_MS=1"};
  }

  // Answers the next request well.
  void answer(std::uint32_t time) {
    const auto request = m_server.receive();
    ASSERT_TRUE(request);
    m_server.answer(answerTo(nonceOf(*request), time));
  }

  // What the service hears next.
  std::uint32_t listen() {
    const Descriptor pipe(::open(m_pipe.c_str(), O_RDONLY | O_CLOEXEC));
    std::uint32_t seconds = 0;
    return ::read(pipe.get(), &seconds, sizeof seconds) == 4 ? seconds : 0;
  }

  FakeSntpServer m_server;
  FakeClock m_clock;
  const support::TemporaryFolder m_folder;
  const std::filesystem::path m_pipe = m_folder / "ntpclient";
  ServerUnderTest m_host{m_clock.handler()};
};

TEST_F(ClientProgram, SetsTheHostsClockAndThenReportsIt) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment());
  answer(kTime);
  const std::uint32_t reported = listen();
  EXPECT_GE(reported, kTime);
  EXPECT_LT(reported, kTime + 10);
  const auto requests = m_clock.requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].size(), 4U);
  EXPECT_EQ(requests[0].value("verb", ""), "clock");
  EXPECT_EQ(requests[0].value("action", ""), "set");
  EXPECT_EQ(requests[0].value("seconds", 0U), reported);
  EXPECT_LT(requests[0].value("nanoseconds", 1'000'000'000), 1'000'000'000);
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), -SIGTERM);
  EXPECT_EQ(program.lines(), Strings{});
}

TEST_F(ClientProgram, TriesAgainAfterSilenceAndAfterABadAnswerWithALine) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  Bytes bad = answerTo(nonceOf(*request), kTime);
  bad[0] |= 3 << 6;
  m_server.answer(bad);
  EXPECT_EQ(program.line(), "ntpclient: answer ignored: the server's clock is not synchronised");
  answer(kTime);
  EXPECT_GE(listen(), kTime);
  program.kill(SIGTERM);
  EXPECT_EQ(program.lines(), Strings{});
}

TEST_F(ClientProgram, ReportsNothingThatTheHostRefused) {
  m_clock.answerWith(R"({"ok":false,"error":"no such action"})");
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment());
  answer(kTime);
  EXPECT_EQ(program.line(), "ntpclient: the host refused: no such action");
  m_clock.answerWith("nonsense");
  answer(kTime);
  EXPECT_EQ(program.line(), "ntpclient: the host's answer is not understood");
  m_clock.answerWith(R"({"ok":true})");
  answer(kTime + 100);
  EXPECT_GE(listen(), kTime + 100) << "and not what was refused";
}

TEST_F(ClientProgram, EndsWhenTheServerDeniesItsService) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_server.answer(kissOfDeath(nonceOf(*request), "DENY"));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.lines(), Strings{"ntpclient: answer ignored: the server denies its service"});
}

// How much more slowly: the tests of the client itself.
TEST_F(ClientProgram, GoesOnWhenTheServerAsksForFewerRequests) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_server.answer(kissOfDeath(nonceOf(*request), "RATE"));
  answer(kTime);
  EXPECT_GE(listen(), kTime);
}

TEST_F(ClientProgram, EndsWhenNoHostIsThere) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_host.stop();
  m_server.answer(answerTo(nonceOf(*request), kTime));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.lines().size(), 1U);
}

TEST_F(ClientProgram, TellsItsStepsOnRequest) {
  ChildProgram program(commandLine({"127.0.0.1", "-4", "-L"}), environment());
  answer(kTime);
  EXPECT_GE(listen(), kTime);
  for (const char* const step : {"asking", "clock set", "reported"}) {
    EXPECT_EQ(program.line(), std::string("ntpclient: ") + step);
  }
}

TEST_F(ClientProgram, EndsAtOnceOnSigtermWhateverItWaitsFor) {
  ChildProgram asking(commandLine({"127.0.0.1", "-4"}), environment());
  ASSERT_TRUE(m_server.receive());
  asking.kill(SIGTERM);
  EXPECT_EQ(asking.wait(), -SIGTERM);
  ChildProgram reporting(commandLine({"127.0.0.1", "-4", "-L"}), environment());
  answer(kTime);
  while (reporting.line() != "ntpclient: clock set") continue;
  reporting.kill(SIGTERM);
  EXPECT_EQ(reporting.wait(), -SIGTERM);
}

TEST_F(ClientProgram, EndsWhenItsParentIsGone) {
  // The shell waits for the client, as the host would; ":" keeps it from becoming the client.
  Strings words = commandLine({"127.0.0.1", "-4"});
  words.insert(words.begin(), {"/bin/sh", "-c", "\"$0\" \"$@\"; :"});
  ChildProgram shell(words, environment());
  ASSERT_TRUE(m_server.receive());
  shell.kill(SIGKILL);
  EXPECT_EQ(shell.wait(), -SIGKILL);
  EXPECT_EQ(shell.lines(), Strings{}) << "ends, as nobody holds the other end any more";
}

TEST(ClientProgramUsage, OtherWordsGetOneUsageLine) {
  for (const Strings& rest : {Strings{"localhost"}, Strings{"127.0.0.1", "-6"},
                              Strings{"127.0.0.1", "-4", "-x"}, Strings{}}) {
    ChildProgram program(commandLine(rest), {"CLOCKHOST_SOCKET=/nowhere"});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.lines(), Strings{kUsage});
  }
}

TEST(ClientProgramUsage, SurroundingsThatAreNotUnderstoodAreRefused) {
  const Strings good = commandLine({"127.0.0.1", "-4"});
  for (const char* const wrong : {"NTPCLIENT_PORT=0", "NTPCLIENT_PORT=65536", "NTPCLIENT_PORT=ntp",
                                  "NTPCLIENT_RETRY_MS=0", "NTPCLIENT_RETRY_MS=1x"}) {
    ChildProgram program(good, {"CLOCKHOST_SOCKET=/nowhere", wrong});
    EXPECT_EQ(program.wait(), 2) << wrong;
    EXPECT_EQ(program.lines().size(), 1U);
  }
  ChildProgram hostless(good, {});
  EXPECT_EQ(hostless.wait(), 2);
}

}  // namespace
}  // namespace host::ntp
