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

namespace {

using Clock = std::chrono::steady_clock;

bool exists(pid_t pid) {
  return kill(pid, 0) == 0 || errno != ESRCH;
}

bool hasChildren() {
  return waitpid(-1, nullptr, WNOHANG) != -1;
}

// Gives children the test's pipe as standard output and standard error.
class ChildWithOutput : public ChildProcess {
 protected:
  ChildWithOutput() {
    host::ProgramMap::instance().setOutput([this](const std::string& program) {
      m_names.push_back(program);
      return host::Descriptor(open(pipePath().c_str(), O_WRONLY | O_CLOEXEC));
    });
  }

  std::vector<std::string> m_names;
};

TEST_F(ChildWithOutput, WritesItsOutputAndErrorsThere) {
  for (const int options : {0, static_cast<int>(Process::ownProcessGroup)}) {
    // Opened first: a pipe without a reader cannot be opened for writing.
    const host::Descriptor reader(open(pipePath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const auto child = process({"/bin/sh", "-c", "echo out; echo error >&2"}, {}, options);
    EXPECT_GT(child->launch(), 0);
    std::string text;
    EXPECT_TRUE(support::becomesTrue([&] {
      std::array<char, 64> part{};
      const ssize_t got = read(reader.get(), part.data(), part.size());
      if (got > 0) text.append(part.data(), static_cast<std::size_t>(got));
      return got == 0;  // the child has ended
    }));
    EXPECT_EQ(text, "out\nerror\n");
  }
  EXPECT_EQ(m_names, (std::vector<std::string>{"sh", "sh"}));
}

TEST_F(ChildWithOutput, KeepsTheOldOneIfThereIsNoDescriptor) {
  host::ProgramMap::instance().setOutput([](const std::string&) {
    errno = EMFILE;
    return host::Descriptor();
  });
  const support::LogCapture log(3);
  const auto child = shell("readlink /proc/$$/fd/2", {"PATH=/bin"});
  EXPECT_GT(child->launch(), 0);
  EXPECT_EQ(output(), std::filesystem::read_symlink("/proc/self/fd/2").string() + "\n");
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(log.has(3,
                      "the output of \"/bin/sh\" goes to the host's own, and not into the log: "
                      "Too many open files"));
}

TEST_F(ChildProcess, HasAFailureLogged) {
  const struct {
    const char* script;
    int level;
    const char* line;
  } rows[] = {
      {"exit 0", 5, "\"/bin/sh\" ended with status 0"},
      {"exit 7", 3, "\"/bin/sh\" ended with status 7"},
      {"kill -9 $$", 3, "\"/bin/sh\" was ended by signal 9"},
  };
  for (const auto& row : rows) {
    const support::LogCapture log;
    const auto child = process({"/bin/sh", "-c", row.script});
    EXPECT_GT(child->launch(), 0);
    EXPECT_TRUE(log.waitForPart("\"/bin/sh\"")) << row.script;
    EXPECT_TRUE(log.has(row.level, row.line)) << log.text();
  }
}

TEST_F(ChildProcess, HasNoFailureLoggedIfItIsEnded) {
  const support::LogCapture log;
  auto child = shell("trap 'exit 1' TERM; echo ready; sleep 1000 & wait", {"PATH=/bin"});
  EXPECT_GT(child->launch(), 0);
  const std::ifstream pipe = outputAfterReady();
  child.reset();
  EXPECT_TRUE(log.entries().empty()) << log.text();
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
