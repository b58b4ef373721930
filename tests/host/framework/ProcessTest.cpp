#include "Process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <string>
#include <vector>

#include "host/framework/ChildProcess.h"
#include "support/Becomes.h"
#include "support/LogCapture.h"

namespace {

using Clock = std::chrono::steady_clock;

bool exists(pid_t pid) {
  return kill(pid, 0) == 0 || errno != ESRCH;
}

bool hasChildren() {
  return waitpid(-1, nullptr, WNOHANG) != -1;
}

TEST_F(ChildProcess, StartsWithDefaultSignals) {
  constexpr std::array kIgnored = {SIGHUP, SIGPIPE, SIGXFSZ};  // as clockhost does
  for (const int ignored : kIgnored) signal(ignored, SIG_IGN);
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  const std::string status =
      outputOf("while read -r line; do echo \"$line\"; done </proc/$$/status");
  pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
  for (const int ignored : kIgnored) signal(ignored, SIG_DFL);
  const auto maskOf = [&](const std::string& name) {
    return std::stoull(status.substr(status.find(name) + name.size()), nullptr, 16);
  };
  EXPECT_EQ(maskOf("SigBlk:"), 0U) << status;
  for (const int ignored : kIgnored) {
    EXPECT_EQ(maskOf("SigIgn:") >> (ignored - 1) & 1U, 0U) << status;
  }
}

TEST_F(ChildProcess, DoesNotStartWithoutAProgram) {
  const support::LogCapture log;
  const std::string plain = m_folder / "plain";
  std::ofstream(plain) << "text";
  for (const std::string& program : {std::string("/no/such/program"), plain, std::string()}) {
    const auto child = process({program});
    EXPECT_LE(child->launch(), 0) << program;
    EXPECT_TRUE(log.hasPart("cannot start \"" + program + "\": ")) << log.text();
  }
  EXPECT_LE(process({})->launch(), 0);
  char* const* none = nullptr;
  EXPECT_LE(Process(0, none, none).launch(), 0);
  EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcess, StartsOnce) {
  const auto child = shell("echo started");
  EXPECT_GT(child->launch(), 0);
  EXPECT_LE(child->launch(), 0);
  EXPECT_EQ(output(), "started\n");
}

TEST_F(ChildProcess, IsTerminatedAndReaped) {
  auto child = shell("trap 'echo asked; exit' TERM; echo ready; sleep 1000 & wait", {"PATH=/bin"});
  const pid_t pid = child->launch();
  std::ifstream pipe = outputAfterReady();
  child.reset();
  EXPECT_FALSE(exists(pid));
  std::string word;
  pipe >> word;
  EXPECT_EQ(word, "asked");
}

TEST_F(ChildProcess, IsKilledIfItIgnoresTermination) {
  auto child = shell("trap '' TERM; echo ready; while :; do sleep 1000; done", {"PATH=/bin"});
  const pid_t pid = child->launch();
  std::ifstream pipe = outputAfterReady();
  const auto before = Clock::now();
  child.reset();
  const auto taken = Clock::now() - before;
  EXPECT_FALSE(exists(pid));
  EXPECT_GE(taken, std::chrono::milliseconds{300}) << "it had too little time to end";
  std::string word;
  EXPECT_FALSE(pipe >> word) << word;
}

TEST_F(ChildProcess, IsKilledIfItIsStopped) {
  auto child = shell("echo ready; exec sleep 1000", {"PATH=/bin"});
  const pid_t pid = child->launch();
  const std::ifstream pipe = outputAfterReady();
  kill(pid, SIGSTOP);
  child.reset();
  EXPECT_FALSE(exists(pid));
}

TEST_F(ChildProcess, EndsItsGroupWhenItEnds) {
  const auto child = shell("sleep 1000 & echo $!", {"PATH=/bin"});
  EXPECT_GT(child->launch(), 0);
  EXPECT_NE(output(), "") << "the output ends when both have ended";
}

TEST_F(ChildProcess, IsReapedBeforeItsHandleIsDestroyed) {
  const auto child = process({"/bin/true"});
  const pid_t pid = child->launch();
  ASSERT_GT(pid, 0);
  EXPECT_TRUE(support::becomesTrue([pid] { return !exists(pid); }));
  EXPECT_FALSE(hasChildren());
}

}  // namespace
