// The program as the service runs it: a fake time server, the channel to the host's clock, a pipe.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <optional>
#include <thread>
#include <vector>

#include "host/ntpclient/ChildProgram.h"
#include "host/ntpclient/FakeClock.h"
#include "host/ntpclient/FakeSntpServer.h"
#include "ntpclient/CommandLine.h"
#include "support/TemporaryFolder.h"

namespace host::ntp {
namespace {

using Strings = std::vector<std::string>;

Strings commandLine(Strings rest) {
  Strings words = {NTPCLIENT_PROGRAM, "-s", "-c", "525600", "-i", "3600", "-n", "15", "-h"};
  words.insert(words.end(), rest.begin(), rest.end());
  return words;
}

class ClientProgram : public testing::Test {
 protected:
  ClientProgram() { EXPECT_EQ(::mkfifo(m_pipe.c_str(), 0600), 0); }

  [[nodiscard]] Strings environment() const {
    return {"CLOCKHOST_CLOCK_FD=" + std::to_string(ChildProgram::kChannel),
            "CLOCKHOST_PIPE=" + m_pipe.string(), "NTPCLIENT_PORT=" + m_server.port(),
            "NTPCLIENT_RETRY_MS=1"};
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
};

TEST_F(ClientProgram, SetsTheHostsClockAndThenReportsIt) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  answer(kTime);
  const std::uint32_t reported = listen();
  EXPECT_GE(reported, kTime);
  EXPECT_LT(reported, kTime + 10);
  const auto requests = m_clock.requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].seconds, reported);
  EXPECT_GE(requests[0].nanoseconds, 0);
  EXPECT_LT(requests[0].nanoseconds, 1'000'000'000);
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), -SIGTERM);
  EXPECT_EQ(program.lines(), Strings{});
}

TEST_F(ClientProgram, ReplacesClosedDescriptors) {
  Strings words = {"/bin/sh", "-c", "exec \"$@\" <&- >&- 2>&-", "sh"};
  for (const std::string& word : commandLine({"127.0.0.1", "-4"})) words.push_back(word);
  const ChildProgram program(words, environment(), m_clock.clientsEnd());
  ASSERT_TRUE(m_server.receive());
  for (const char* const standard : {"0", "1", "2"}) {
    const std::filesystem::path folder = "/proc/" + std::to_string(program.id()) + "/fd";
    EXPECT_EQ(std::filesystem::read_symlink(folder / standard), "/dev/null");
  }
}

TEST_F(ClientProgram, TriesAgainAfterSilenceAndAfterABadAnswerWithALine) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
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

TEST_F(ClientProgram, GoesOnBesideAStandardErrorThatNobodyReads) {
  const std::filesystem::path full = m_folder / "errors";
  ASSERT_EQ(::mkfifo(full.c_str(), 0600), 0);
  const Descriptor reader(::open(full.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  while (::write(reader.get(), "full", 4) == 4) continue;
  Strings words = {"/bin/sh", "-c", "exec \"$@\" 2>\"$0\"", full};
  for (const std::string& word : commandLine({"127.0.0.1", "-4", "-L"})) words.push_back(word);
  const ChildProgram program(words, environment(), m_clock.clientsEnd());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_server.answer(answerTo(nonceOf(*request), kTime));
  EXPECT_GE(listen(), kTime);
}

// Whether writes to the standard error of the process wait for a reader.
bool waitsForReaders(pid_t process) {
  std::ifstream facts("/proc/" + std::to_string(process) + "/fdinfo/2");
  for (std::string word; facts >> word && word != "flags:";) continue;
  int flags = -1;
  EXPECT_TRUE(facts >> std::oct >> flags);
  return (flags & O_NONBLOCK) == 0;
}

TEST_F(ClientProgram, HasAStandardErrorOfItsOwn) {
  const ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  ASSERT_TRUE(m_server.receive());
  EXPECT_FALSE(waitsForReaders(program.id()));
}

TEST_F(ClientProgram, LeavesTheStandardErrorOfItsParentAsItIs) {
  Strings words = commandLine({"127.0.0.1", "-4"});
  words.insert(words.begin(), {"/bin/sh", "-c", "\"$0\" \"$@\"; :"});
  const ChildProgram shell(words, environment(), m_clock.clientsEnd());
  ASSERT_TRUE(m_server.receive());
  EXPECT_TRUE(waitsForReaders(shell.id()));
}

TEST_F(ClientProgram, ReportsNothingThatTheHostRefused) {
  m_clock.answerWith(EPERM);
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  answer(kTime);
  EXPECT_EQ(program.line(), "ntpclient: the host refused: Operation not permitted");
  m_clock.answerWith(0);
  answer(kTime + 100);
  EXPECT_GE(listen(), kTime + 100) << "and not what was refused";
}

TEST_F(ClientProgram, EndsWhenTheServerDeniesItsService) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_server.answer(kissOfDeath(nonceOf(*request), "DENY"));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.lines(), Strings{"ntpclient: answer ignored: the server denies its service"});
}

// How much more slowly: the tests of the client itself.
TEST_F(ClientProgram, GoesOnWhenTheServerAsksForFewerRequests) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_server.answer(kissOfDeath(nonceOf(*request), "RATE"));
  answer(kTime);
  EXPECT_GE(listen(), kTime);
}

TEST_F(ClientProgram, EndsWhenTheHostClosesTheChannel) {
  m_clock.answerWith(-1);
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_server.answer(answerTo(nonceOf(*request), kTime));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.lines(), Strings{"ntpclient: the host has closed the channel"});
}

TEST_F(ClientProgram, EndsWhenTheHostIsGone) {
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  const auto request = m_server.receive();
  ASSERT_TRUE(request);
  m_clock.hangUp();
  m_server.answer(answerTo(nonceOf(*request), kTime));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.lines(), Strings{"ntpclient: the host is gone: Broken pipe"});
}

TEST_F(ClientProgram, TellsItsStepsOnRequest) {
  ChildProgram program(commandLine({"127.0.0.1", "-4", "-L"}), environment(), m_clock.clientsEnd());
  answer(kTime);
  EXPECT_GE(listen(), kTime);
  for (const char* const step : {"asking", "clock set", "reported"}) {
    EXPECT_EQ(program.line(), std::string("ntpclient: ") + step);
  }
}

TEST_F(ClientProgram, EndsAtOnceOnSigtermWhateverItWaitsFor) {
  ChildProgram asking(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  ASSERT_TRUE(m_server.receive());
  asking.kill(SIGTERM);
  EXPECT_EQ(asking.wait(), -SIGTERM);
  ChildProgram reporting(commandLine({"127.0.0.1", "-4", "-L"}), environment(),
                         m_clock.clientsEnd());
  answer(kTime);
  while (reporting.line() != "ntpclient: clock set") continue;
  reporting.kill(SIGTERM);
  EXPECT_EQ(reporting.wait(), -SIGTERM);
}

TEST_F(ClientProgram, EndsOnSigtermAlsoWhenItWasStartedWithSignalsBlocked) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &all, &before), 0);
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
  ASSERT_TRUE(m_server.receive());
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), -SIGTERM);
}

// The process is its parent, and not the thread that happened to start it.
TEST_F(ClientProgram, OutlivesTheThreadThatStartedIt) {
  std::optional<ChildProgram> program;
  std::thread starting([&] {
    program.emplace(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
    ASSERT_TRUE(m_server.receive());
  });
  starting.join();
  answer(kTime);
  if (HasFatalFailure()) return;  // nobody would be heard
  EXPECT_GE(listen(), kTime);
}

TEST_F(ClientProgram, SaysThatThePipeIsNone) {
  std::filesystem::remove(m_pipe);
  std::ofstream(m_pipe) << "a file";
  ChildProgram program(commandLine({"127.0.0.1", "-4"}), environment(), m_clock.clientsEnd());
  answer(kTime);
  EXPECT_EQ(program.line(), "ntpclient: " + m_pipe.string() + " is no pipe");
}

TEST_F(ClientProgram, EndsWhenItsParentIsGone) {
  // The shell waits for the client, as the host would; ":" keeps it from becoming the client.
  Strings words = commandLine({"127.0.0.1", "-4"});
  words.insert(words.begin(), {"/bin/sh", "-c", "\"$0\" \"$@\"; :"});
  ChildProgram shell(words, environment(), m_clock.clientsEnd());
  ASSERT_TRUE(m_server.receive());
  shell.kill(SIGKILL);
  EXPECT_EQ(shell.wait(), -SIGKILL);
  EXPECT_EQ(shell.lines(), Strings{}) << "ends, as nobody holds the other end any more";
}

TEST(ClientProgramUsage, OtherWordsGetOneUsageLine) {
  for (const Strings& rest : {Strings{"localhost"}, Strings{"127.0.0.1", "-6"},
                              Strings{"127.0.0.1", "-4", "-x"}, Strings{}}) {
    ChildProgram program(commandLine(rest), {"CLOCKHOST_CLOCK_FD=2"});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.lines(), Strings{kUsage});
  }
}

TEST(ClientProgramUsage, WrongEnvironmentIsRefused) {
  const Strings good = commandLine({"127.0.0.1", "-4"});
  for (const char* const wrong : {"NTPCLIENT_PORT=0", "NTPCLIENT_PORT=65536", "NTPCLIENT_PORT=ntp",
                                  "NTPCLIENT_RETRY_MS=0", "NTPCLIENT_RETRY_MS=1x"}) {
    ChildProgram program(good, {"CLOCKHOST_CLOCK_FD=2", wrong});
    EXPECT_EQ(program.wait(), 2) << wrong;
    EXPECT_EQ(program.lines().size(), 1U);
  }
  for (const Strings& none : {Strings{}, Strings{"CLOCKHOST_CLOCK_FD=99"},
                              Strings{"CLOCKHOST_CLOCK_FD=0"}, Strings{"CLOCKHOST_CLOCK_FD=x"}}) {
    ChildProgram hostless(good, none);
    EXPECT_EQ(hostless.wait(), 2);
    EXPECT_EQ(hostless.lines(),
              Strings{"ntpclient: CLOCKHOST_CLOCK_FD is no descriptor of a host"});
  }
}

}  // namespace
}  // namespace host::ntp
