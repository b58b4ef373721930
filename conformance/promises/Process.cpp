#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Promise.h"

namespace {

using Words = std::vector<std::string>;

std::vector<char*> wordPointers(Words& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool processExists(pid_t pid) {
  return kill(pid, 0) == 0 || errno != ESRCH;
}

// The reading end of a named pipe. Does not wait for ever, as a program that was not started never
// writes.
class PipeReader {
 public:
  explicit PipeReader(const std::string& path)
      : m_pipe(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
  ~PipeReader() { close(m_pipe); }
  PipeReader(const PipeReader&) = delete;
  PipeReader& operator=(const PipeReader&) = delete;

  // Up to this text, or until the last writer has ended.
  std::string read(const std::string& end = "") const {
    std::string text;
    while (end.empty() || text.find(end) == std::string::npos) {
      pollfd waiting{m_pipe, POLLIN, 0};
      const int ready = poll(&waiting, 1, 60'000);
      if (ready < 0 && errno == EINTR) continue;
      std::array<char, 4096> part{};
      const ssize_t got = ready > 0 ? ::read(m_pipe, part.data(), part.size()) : -1;
      EXPECT_GT(ready, 0) << "no output within a minute";
      if (ready <= 0 || got == 0) break;
      if (got > 0) text.append(part.data(), static_cast<std::size_t>(got));
    }
    return text;
  }
  bool hasEnded() const {
    char byte = '\0';
    return ::read(m_pipe, &byte, 1) == 0;
  }

 private:
  const int m_pipe;
};

// Starts shells that write into a named pipe. The pipe ends when its last writer has ended.
class ProcessPromise : public conformance::Promise {
 protected:
  ProcessPromise() { EXPECT_EQ(mkfifo(pipePath().c_str(), 0600), 0); }

  static std::unique_ptr<Process> process(Words arguments, Words environment = {},
                                          int options = Process::ownProcessGroup,
                                          const char* folder = nullptr) {
    const std::vector<char*> words = wordPointers(arguments);
    const std::vector<char*> variables = wordPointers(environment);
    return std::make_unique<Process>(options, words.data(), variables.data(), folder);
  }

  // A shell that runs the script with its output going into the pipe.
  std::unique_ptr<Process> shell(const std::string& script, Words environment = {"PATH=/bin"},
                                 int options = Process::ownProcessGroup,
                                 const char* folder = nullptr) const {
    return process(
        {"/bin/sh", "-c", "exec >'" + pipePath() + "'; " + script, "name", "one", "t w o"},
        std::move(environment), options, folder);
  }

  // The whole output of the script.
  std::string outputOf(const std::string& script, Words environment = {"PATH=/bin"},
                       int options = Process::ownProcessGroup, const char* folder = nullptr) const {
    const auto child = shell(script, std::move(environment), options, folder);
    const bool launched = child->launch() > 0;
    EXPECT_TRUE(launched);
    return launched ? output() : "";
  }
  [[nodiscard]] std::string output() const { return PipeReader(pipePath()).read(); }

  // script: prints "ready" and does not end.
  void expectEndedWithItsHandle(const std::string& script) const {
    auto child = shell(script);
    const pid_t pid = child->launch();
    ASSERT_GT(pid, 0);
    const PipeReader pipe(pipePath());
    EXPECT_EQ(pipe.read("ready\n"), "ready\n");
    child.reset();
    EXPECT_FALSE(processExists(pid));
  }

  [[nodiscard]] std::string pipePath() const { return m_folder / "pipe"; }

  const conformance::ScratchFolder m_folder;
};

TEST_F(ProcessPromise, PassesTheArguments) {
  promises("arguments: null-terminated; entry 0 is the program's path.");
  EXPECT_EQ(outputOf("echo \"$0|$1|$2|$#\""), "name|one|t w o|2\n");
}

TEST_F(ProcessPromise, PassesTheEnvironmentAndNoMore) {
  promises("environment: null-terminated \"NAME=value\" texts.");
  EXPECT_EQ(outputOf("tr '\\0' '\\n' </proc/$$/environ", {"PATH=/bin:/usr/bin", "A=1 2"}),
            "PATH=/bin:/usr/bin\nA=1 2\n");
}

TEST_F(ProcessPromise, CopiesArgumentsAndEnvironment) {
  promises("Both are copied.");
  Words arguments{"/bin/sh", "-c", "echo $A >'" + pipePath() + "'"};
  Words environment{"A=before"};
  Process child(Process::ownProcessGroup, wordPointers(arguments).data(),
                wordPointers(environment).data());
  for (Words* const texts : {&arguments, &environment}) {
    for (std::string& text : *texts) text.assign(text.size(), '?');
  }
  ASSERT_GT(child.launch(), 0);
  EXPECT_EQ(output(), "before\n");
}

TEST_F(ProcessPromise, RunsInItsFolder) {
  promises("workingFolder: null keeps the creator's.");
  EXPECT_EQ(outputOf("pwd", {}, Process::ownProcessGroup, "/proc"), "/proc\n");
  EXPECT_EQ(outputOf("pwd"), std::filesystem::current_path().string() + "\n");
}

TEST_F(ProcessPromise, LeadsAGroupOfItsOwn) {
  promises("8: the child leads a process group of its own");
  const std::string script = "read -r id name state parent group rest </proc/$$/stat; ";
  EXPECT_EQ(outputOf(script + "[ $group = $$ ] && echo own"), "own\n");
  EXPECT_EQ(outputOf(script + "echo $group", {}, 0), std::to_string(getpgrp()) + "\n");
}

TEST_F(ProcessPromise, InheritsOnlyTheStandardDescriptors) {
  promises("and inherits no descriptor but the three standard ones.");
  const int left = fcntl(STDERR_FILENO, F_DUPFD, 50);  // stays open over an exec
  ASSERT_GE(left, 50);
  const std::string number = std::to_string(left);
  EXPECT_EQ(outputOf("[ -e /proc/$$/fd/" + number + " ] && echo open || echo closed"), "closed\n");
  EXPECT_EQ(outputOf("[ -e /proc/$$/fd/2 ] && echo open"), "open\n");
  close(left);
}

TEST_F(ProcessPromise, StartsAtLaunch) {
  promises("Starts the child. Returns its process id");
  shell("echo started").reset();
  const auto child = shell("echo $$");
  const int pid = child->launch();
  ASSERT_GT(pid, 0);
  EXPECT_EQ(output(), std::to_string(pid) + "\n");
}

TEST_F(ProcessPromise, LaunchFailsWithoutAProgram) {
  promises("or 0 or less when it could not be started.");
  EXPECT_LE(process({"/no/such/program"})->launch(), 0);
  EXPECT_LE(process({"/bin/sh"}, {}, 0, "/no/such/folder")->launch(), 0);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST_F(ProcessPromise, DestructionEndsAndReapsTheChild) {
  promises("Ends the child, if it still runs, together with its process group, and reaps it.");
  expectEndedWithItsHandle("echo ready; exec sleep 1000");
}

TEST_F(ProcessPromise, DestructionEndsAChildThatIgnoresTermination) {
  promises("Destruction ends the child and reaps it.");
  expectEndedWithItsHandle("trap '' TERM; echo ready; while :; do sleep 1000; done");
}

// The pipe ends only when the grandchild has ended too: without a writer, a read returns 0.
TEST_F(ProcessPromise, DestructionEndsTheGroup) {
  promises("together with its process group");
  auto child = shell("(trap '' TERM; echo ready; while :; do sleep 1000; done) & wait");
  ASSERT_GT(child->launch(), 0);
  const PipeReader pipe(pipePath());
  EXPECT_EQ(pipe.read("ready\n"), "ready\n");
  child.reset();
  EXPECT_TRUE(conformance::becomesTrue([&] { return pipe.hasEnded(); }, std::chrono::seconds{5}));
}

TEST_F(ProcessPromise, DestructionReapsAChildThatHasEnded) {
  promises("and reaps it.");
  auto child = shell("echo end");
  const pid_t pid = child->launch();
  ASSERT_GT(pid, 0);
  EXPECT_EQ(output(), "end\n");
  child.reset();
  EXPECT_FALSE(processExists(pid));
}

// The clock replaces its NTP client after each full hour.
TEST_F(ProcessPromise, ReplacementsLeaveNoProcessAndNoDescriptor) {
  promises("Destruction ends the child and reaps it.");
  const auto descriptors = [] {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
  };
  const auto before = descriptors();
  std::unique_ptr<Process> child;
  for (int i = 0; i < 50; ++i) {
    child.reset();
    child = process({"/bin/sh", "-c", i % 2 == 0 ? ":" : "exec /bin/sleep 1000"});
    ASSERT_GT(child->launch(), 0) << i;
  }
  child.reset();
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  EXPECT_EQ(descriptors(), before);
}

}  // namespace
