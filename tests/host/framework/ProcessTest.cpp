#include "Process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/framework/ChildProcess.h"
#include "support/Becomes.h"
#include "support/LogCapture.h"
#include "support/OpenDescriptors.h"

namespace {

using Clock = std::chrono::steady_clock;

bool exists(pid_t pid) {
  return kill(pid, 0) == 0 || errno != ESRCH;
}

bool hasChildren() {
  return waitpid(-1, nullptr, WNOHANG) != -1;
}

TEST_F(ChildProcess, GetsItsArgumentsUnchanged) {
  EXPECT_EQ(outputOf("echo \"$0|$1|$2|$#\""), "name|one|t w o|2\n");
}

TEST_F(ChildProcess, GetsTheGivenEnvironmentOnly) {
  EXPECT_EQ(outputOf("tr '\\0' '\\n' </proc/$$/environ", {"PATH=/bin:/usr/bin", "A=1 2"}),
            "PATH=/bin:/usr/bin\nA=1 2\n");
}

TEST_F(ChildProcess, CopiesItsArgumentsAndEnvironment) {
  Texts arguments{"/bin/sh", "-c", "echo $A >'" + pipePath() + "'"};
  Texts environment{"A=before"};
  Process child(Process::ownProcessGroup, pointersTo(arguments).data(),
                pointersTo(environment).data());
  for (Texts* const texts : {&arguments, &environment}) {
    for (std::string& text : *texts) text.assign(text.size(), '?');
  }
  EXPECT_GT(child.launch(), 0);
  EXPECT_EQ(output(), "before\n");
}

TEST_F(ChildProcess, RunsInTheGivenFolder) {
  EXPECT_EQ(outputOf("pwd", {}, Process::ownProcessGroup, "/proc"), "/proc\n");
  EXPECT_EQ(outputOf("pwd"), std::filesystem::current_path().string() + "\n");
}

TEST_F(ChildProcess, LeadsAProcessGroupOnRequest) {
  const std::string script = "read -r id name state parent group rest </proc/$$/stat; ";
  EXPECT_EQ(outputOf(script + "[ $group = $$ ] && echo own"), "own\n");
  EXPECT_EQ(outputOf(script + "echo $group", {}, 0), std::to_string(getpgrp()) + "\n");
}

TEST_F(ChildProcess, InheritsOnlyStandardDescriptorsOnRequest) {
  const int left = fcntl(STDERR_FILENO, F_DUPFD, 50);  // stays open over an exec
  ASSERT_GE(left, 50);
  const std::string script =
      "[ -e /proc/$$/fd/" + std::to_string(left) + " ] && echo open || echo closed";
  EXPECT_EQ(outputOf(script), "closed\n");
  EXPECT_EQ(outputOf(script, {}, 0), "open\n");
  EXPECT_EQ(outputOf("[ -e /proc/$$/fd/2 ] && echo open"), "open\n");
  close(left);
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

TEST_F(ChildProcess, DoesNotStartInAMissingFolder) {
  EXPECT_LE(shell(":", {}, 0, "/no/such/folder")->launch(), 0);
  EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcess, StartsOnce) {
  const auto child = shell("echo started");
  EXPECT_GT(child->launch(), 0);
  EXPECT_LE(child->launch(), 0);
  EXPECT_EQ(output(), "started\n");
}

TEST_F(ChildProcess, DoesNotStartOnConstruction) {
  shell("echo started").reset();
  EXPECT_FALSE(hasChildren());
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

// The pipe ends only when the grandchild has ended too.
TEST_F(ChildProcess, IsEndedTogetherWithItsGroup) {
  auto child =
      shell("(trap '' TERM; echo ready; while :; do sleep 1000; done) & wait", {"PATH=/bin"});
  EXPECT_GT(child->launch(), 0);
  std::ifstream pipe = outputAfterReady();
  child.reset();
  std::string word;
  EXPECT_FALSE(pipe >> word) << word;
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

TEST_F(ChildProcess, LeavesNoProcessAndDescriptorAfterManyReplacements) {
  const auto before = support::openDescriptors();
  std::unique_ptr<Process> child;
  for (int i = 0; i < 200; ++i) {
    child.reset();
    const bool endsAtOnce = i % 2 == 0;
    child = endsAtOnce ? process({"/bin/true"}) : process({"/bin/sleep", "1000"});
    ASSERT_GT(child->launch(), 0) << i;
  }
  child.reset();
  EXPECT_FALSE(hasChildren());
  EXPECT_EQ(support::openDescriptors(), before);
}

}  // namespace
