// The program as the service runs it: a fake time server, the channel to the host's clock, a pipe.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "host/ntpclient/FakeClock.h"
#include "host/ntpclient/FakeSntpServer.h"
#include "integration/OneLine.h"
#include "integration/Programs.h"
#include "ntpclient/CommandLine.h"
#include "support/TemporaryFolder.h"

namespace host::ntp {
namespace {

using integration::Program;
using integration::Words;

// The client with these environment variables and no others.
Words command(Words variables, const Words& address) {
  Words words = {"/usr/bin/env", "-i"};
  variables.insert(variables.end(),
                   {NTPCLIENT_PROGRAM, "-s", "-c", "525600", "-i", "3600", "-n", "15", "-h"});
  words.insert(words.end(), variables.begin(), variables.end());
  words.insert(words.end(), address.begin(), address.end());
  return words;
}

class ClientProgram : public testing::Test {
 protected:
  ClientProgram() {
    EXPECT_EQ(::mkfifo(m_pipe.c_str(), 0600), 0);
    EXPECT_EQ(::mkfifo(m_errors.c_str(), 0600), 0);
  }

  [[nodiscard]] Words client(const Words& address = {"127.0.0.1", "-4"}) const {
    return command(
        {"CLOCKHOST_CLOCK_FD=" + std::to_string(m_clock.clientsEnd()), "CLOCKHOST_PIPE=" + m_pipe,
         "NTPCLIENT_PORT=" + m_server.port(), "NTPCLIENT_RETRY_MS=1"},
        address);
  }
  [[nodiscard]] Program start(const Words& words) const {
    return {m_folder.path(), "client", words};
  }

  // The next report to the service.
  [[nodiscard]] std::uint32_t listen() const {
    const Descriptor pipe(::open(m_pipe.c_str(), O_RDONLY | O_CLOEXEC));
    std::uint32_t seconds = 0;
    return ::read(pipe.get(), &seconds, sizeof seconds) == 4 ? seconds : 0;
  }

  FakeSntpServer m_server;
  FakeClock m_clock;
  const support::TemporaryFolder m_folder;
  const std::string m_pipe = m_folder / "ntpclient";
  const std::string m_errors = m_folder / "errors";
};

TEST_F(ClientProgram, SetsTheHostsClockAndThenReportsIt) {
  Program program = start(client({"127.0.0.1", "-4", "-L"}));
  m_server.serve(kTime);
  const std::uint32_t reported = listen();
  EXPECT_GE(reported, kTime);
  EXPECT_LT(reported, kTime + 10);
  const auto requests = m_clock.requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].seconds, reported);
  EXPECT_TRUE(program.says("reported\n"));
  program.signal(SIGTERM);
  const auto outcome = program.wait();
  EXPECT_EQ(outcome.status, 128 + SIGTERM);
  EXPECT_EQ(outcome.err, "ntpclient: asking\nntpclient: clock set\nntpclient: reported\n");
}

TEST_F(ClientProgram, ReplacesClosedDescriptors) {
  const Program program = start(integration::inShell("<&- >&- 2>&-", client()));
  static_cast<void>(m_server.receive());
  for (const char* const standard : {"0", "1", "2"}) {
    const std::filesystem::path folder = "/proc/" + std::to_string(program.id()) + "/fd";
    EXPECT_EQ(std::filesystem::read_symlink(folder / standard), "/dev/null");
  }
}

// Whether writes to the standard error of the process wait for a reader.
bool waitsForReaders(const Program& program) {
  std::ifstream facts("/proc/" + std::to_string(program.id()) + "/fdinfo/2");
  for (std::string word; facts >> word && word != "flags:";) continue;
  int flags = -1;
  EXPECT_TRUE(facts >> std::oct >> flags);
  return (flags & O_NONBLOCK) == 0;
}

TEST_F(ClientProgram, DoesNotWaitForAReaderOfItsStandardError) {
  const Descriptor reader(::open(m_errors.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  while (::write(reader.get(), "full", 4) == 4) continue;
  const Program program =
      start(integration::inShell("2>\"" + m_errors + "\"", client({"127.0.0.1", "-4", "-L"})));
  m_server.serve(kTime);
  EXPECT_GE(listen(), kTime);
  EXPECT_FALSE(waitsForReaders(program));
}

TEST_F(ClientProgram, LeavesTheStandardErrorOfItsParentAloneAndEndsWithIt) {
  const Descriptor reader(::open(m_errors.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  Words words = {"/bin/sh", "-c", "exec 2>\"$0\"; \"$@\"; :", m_errors};
  for (const std::string& word : client()) words.push_back(word);
  Program shell = start(words);
  static_cast<void>(m_server.receive());
  EXPECT_TRUE(waitsForReaders(shell));
  shell.signal(SIGKILL);
  EXPECT_EQ(shell.wait().status, 128 + SIGKILL);
  pollfd waiting{reader.get(), 0, 0};
  EXPECT_EQ(::poll(&waiting, 1, static_cast<int>(kLong.count())), 1);
  EXPECT_EQ(waiting.revents, POLLHUP) << "all writers have closed it";
}

TEST_F(ClientProgram, EndsOnSigtermEvenIfStartedWithSignalsBlocked) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &all, &before), 0);
  Program program = start(client());
  ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
  static_cast<void>(m_server.receive());
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait().status, 128 + SIGTERM);
}

TEST_F(ClientProgram, EndsOnSigtermWhileItsReportIsUnread) {
  const Descriptor silent(::open(m_pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  Program program = start(client());
  m_server.serve(kTime);
  pollfd report{silent.get(), POLLIN, 0};
  ASSERT_EQ(::poll(&report, 1, static_cast<int>(kLong.count())), 1);
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait().status, 128 + SIGTERM);
}

TEST(ClientProgramUsage, IsRefusedInOneLineWhenItIsWrong) {
  const Words good = {"127.0.0.1", "-4"};
  const char* const channel = "CLOCKHOST_CLOCK_FD=2";
  const std::string noNumber = "NTPCLIENT_PORT or NTPCLIENT_RETRY_MS is not a valid number";
  const std::string noChannel = "CLOCKHOST_CLOCK_FD is not a descriptor";
  const struct {
    Words variables;
    Words address;
    std::string line;
  } rows[] = {
      {{channel}, {}, kUsage},
      {{channel, "NTPCLIENT_PORT=0"}, good, noNumber},
      {{channel, "NTPCLIENT_PORT=65536"}, good, noNumber},
      {{channel, "NTPCLIENT_PORT=ntp"}, good, noNumber},
      {{channel, "NTPCLIENT_RETRY_MS=0"}, good, noNumber},
      {{channel, "NTPCLIENT_RETRY_MS=1x"}, good, noNumber},
      {{}, good, noChannel},
      {{"CLOCKHOST_CLOCK_FD=99"}, good, noChannel},
      {{"CLOCKHOST_CLOCK_FD=0"}, good, noChannel},
      {{"CLOCKHOST_CLOCK_FD=x"}, good, noChannel},
  };
  const support::TemporaryFolder folder;
  for (const auto& [variables, address, line] : rows) {
    Program program(folder.path(), "client", command(variables, address));
    integration::expectOneLine(program.wait(), 2, {line});
  }
}

}  // namespace
}  // namespace host::ntp
