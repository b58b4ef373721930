// The programs that tests start leave this machine alone.
#include "integration/Programs.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "support/TemporaryFolder.h"

namespace integration {
namespace {

constexpr int kLimit = 30'000;  // milliseconds

// A test program that starts a long-running program, writes its process id, and hangs.
[[noreturn]] void hangWithAProgram(const std::filesystem::path& folder, int ids) {
  const Program sleeper(folder, "sleeper", {"/bin/sleep", "600"});
  const pid_t id = sleeper.id();
  if (::write(ids, &id, sizeof id) != sizeof id) ::_exit(1);
  for (;;) ::pause();
}

TEST(Program, IsNotSignalledAfterItsEnd) {
  const support::TemporaryFolder folder;
  Program program(folder.path(), "true", {"/bin/true"});
  static_cast<void>(program.wait());
  EXPECT_THROW(program.signal(0), std::logic_error);
  EXPECT_THROW(program.wait(), std::logic_error);
}

TEST(Program, DiesWithTheTestThatStartedIt) {
  const support::TemporaryFolder folder;
  std::array<int, 2> ids{};
  ASSERT_EQ(::pipe(ids.data()), 0);
  const pid_t test = ::fork();
  ASSERT_GE(test, 0);
  if (test == 0) hangWithAProgram(folder.path(), ids[1]);
  pid_t sleeper = 0;
  ASSERT_EQ(::read(ids[0], &sleeper, sizeof sleeper), static_cast<ssize_t>(sizeof sleeper));
  pollfd end{static_cast<int>(::syscall(SYS_pidfd_open, sleeper, 0)), POLLIN, 0};
  ::kill(test, SIGKILL);
  ::waitpid(test, nullptr, 0);
  EXPECT_EQ(::poll(&end, 1, kLimit), 1) << "it still runs";
  if (HasFailure()) ::kill(sleeper, SIGKILL);
  for (const int descriptor : {end.fd, ids[0], ids[1]}) ::close(descriptor);
}

// Neither with what it holds nor with what the bounding set would give root.
TEST(Program, CannotSetTheMachinesClock) {
  constexpr unsigned long long kSysTime = 1ULL << 25U;  // CAP_SYS_TIME
  const support::TemporaryFolder folder;
  const std::string status =
      Program(folder.path(), "cat", {"/bin/cat", "/proc/self/status"}).wait().out;
  const auto maskOf = [&](const std::string& name) {
    return std::stoull(status.substr(status.find(name) + name.size()), nullptr, 16);
  };
  for (const char* const set : {"CapInh:", "CapPrm:", "CapEff:", "CapAmb:"}) {
    EXPECT_EQ(maskOf(set) & kSysTime, 0U) << status;
  }
  EXPECT_TRUE((maskOf("CapBnd:") & kSysTime) == 0 || maskOf("NoNewPrivs:") == 1) << status;
}

}  // namespace
}  // namespace integration
