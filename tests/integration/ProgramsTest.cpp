// The programs that tests start, themselves.
#include "integration/Programs.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "support/TemporaryFolder.h"

namespace integration {
namespace {

constexpr int kLimit = 30'000;  // milliseconds

// Another test program: starts a long one, tells its number, and then neither ends nor works.
[[noreturn]] void standStillWithAProgram(const std::filesystem::path& folder, int numbers) {
  const Program sleeper(folder, "sleeper", {"/bin/sleep", "600"});
  const pid_t id = sleeper.id();
  if (::write(numbers, &id, sizeof id) != sizeof id) ::_exit(1);
  for (;;) ::pause();
}

TEST(Program, IsNoLongerSignalledOnceItHasBeenWaitedFor) {
  const support::TemporaryFolder folder;
  Program program(folder.path(), "true", {"/bin/true"});
  static_cast<void>(program.wait());
  EXPECT_THROW(program.signal(0), std::logic_error);
  EXPECT_THROW(program.wait(), std::logic_error);
}

TEST(Program, DiesWithTheTestThatStartedIt) {
  const support::TemporaryFolder folder;
  std::array<int, 2> numbers{};
  ASSERT_EQ(::pipe(numbers.data()), 0);
  const pid_t test = ::fork();
  ASSERT_GE(test, 0);
  if (test == 0) standStillWithAProgram(folder.path(), numbers[1]);
  pid_t sleeper = 0;
  ASSERT_EQ(::read(numbers[0], &sleeper, sizeof sleeper), static_cast<ssize_t>(sizeof sleeper));
  pollfd end{static_cast<int>(::syscall(SYS_pidfd_open, sleeper, 0)), POLLIN, 0};
  ::kill(test, SIGKILL);
  ::waitpid(test, nullptr, 0);
  EXPECT_EQ(::poll(&end, 1, kLimit), 1) << "it lives on";
  if (HasFailure()) ::kill(sleeper, SIGKILL);
  for (const int descriptor : {end.fd, numbers[0], numbers[1]}) ::close(descriptor);
}

// Not by what it holds, nor by what the bounding set would give root.
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

TEST(Program, ThatIsNotThereIsSaidToBeSo) {
  const support::TemporaryFolder folder;
  const std::string name = folder / "nothing";
  try {
    const Program program(folder.path(), "nothing", {name});
    FAIL() << "it runs";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code().value(), ENOENT);
    EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
  }
}

TEST(Program, TellsItsStatusAndWhatItWrote) {
  const support::TemporaryFolder folder;
  Program program(folder.path(), "shell", {"/bin/sh", "-c", "cat; echo out; echo err >&2; exit 7"});
  const Outcome outcome = program.wait();
  EXPECT_EQ(outcome.status, 7);
  EXPECT_EQ(outcome.out, "out\n");
  EXPECT_EQ(outcome.err, "err\n");
}

}  // namespace
}  // namespace integration
