#include "scenario/ScenarioProcesses.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/PrintableText.h"
#include "base/WriteAll.h"
#include "scenario/ScenarioRunner.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void failStart() {
  throw Error(std::string("cannot start a process for a scenario: ") + std::strerror(errno));
}

volatile std::sig_atomic_t g_interruption = 0;

extern "C" void noteInterruption(int number) {
  g_interruption = number;
}

// While it exists, SIGINT and SIGTERM are noted, and arrive only while wait() waits. Owner:
// runCases; one at a time.
class Interruption {
 public:
  Interruption() {
    g_interruption = 0;
    sigset_t both;
    sigemptyset(&both);
    for (const int number : kSignals) sigaddset(&both, number);
    ::sigprocmask(SIG_BLOCK, &both, &m_mask);
    for (const int number : kSignals) std::signal(number, noteInterruption);
  }
  ~Interruption() {
    for (const int number : kSignals) std::signal(number, SIG_DFL);
    unblock();
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // As poll() without a limit.
  int wait(std::vector<pollfd>& polled) const {
    return ::ppoll(polled.data(), polled.size(), nullptr, &m_mask);
  }

  // Also for a child process, which still only notes the two: Ctrl-C reaches it as well, and the
  // runner, which ends it, would take its end for a failure. What it starts has the default
  // actions.
  void unblock() const { ::sigprocmask(SIG_SETMASK, &m_mask, nullptr); }

 private:
  static constexpr int kSignals[] = {SIGINT, SIGTERM};
  sigset_t m_mask{};
};

// Contains all telephones' folders. It is removed at the end, even if a telephone's process is
// killed. If it cannot be made, each telephone reports that.
class CommonFolder {
 public:
  CommonFolder() {
    std::error_code error;
    m_path = std::filesystem::temp_directory_path(error) / "clock-scenarios-XXXXXX";
    if (error || ::mkdtemp(m_path.data()) == nullptr) {
      m_path.clear();
    } else {
      ::setenv("TMPDIR", m_path.c_str(), 1);
    }
  }
  ~CommonFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  CommonFolder(const CommonFolder&) = delete;
  CommonFolder& operator=(const CommonFolder&) = delete;

 private:
  std::string m_path;
};

// In the new process. It ends as a program does, with the destructors of all static objects.
[[noreturn]] void runInChild(Plugin& plugin, const ScenarioCase& each, int output, pid_t runner) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != runner) ::_exit(1);  // the runner ended before
  const std::string failure = runScenario(plugin, each.scenario, each.file);
  static_cast<void>(writeAll(output, failure));  // false: the runner is gone
  std::exit(failure.empty() ? 0 : 1);            // NOLINT(concurrency-mt-unsafe): the last thread
}

// A case in its process, which sends the failure through a pipe. Owner: a list; the case outlives
// it. Destroyed before its end, it kills the process.
class RunningCase {
 public:
  RunningCase(Plugin& plugin, ScenarioCase& each, const Interruption& interruption) : m_case(each) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) failStart();
    m_output = Descriptor(ends[0]);
    const Descriptor input(ends[1]);
    const pid_t runner = ::getpid();
    m_process = ::fork();
    if (m_process < 0) failStart();
    if (m_process != 0) return;
    interruption.unblock();
    runInChild(plugin, each, input.get(), runner);
  }
  ~RunningCase() {
    if (m_process <= 0) return;
    ::kill(m_process, SIGKILL);
    static_cast<void>(reap());
  }
  RunningCase(const RunningCase&) = delete;
  RunningCase& operator=(const RunningCase&) = delete;

  [[nodiscard]] int output() const { return m_output.get(); }

  // REQUIRES: the output is readable. True: the case has ended, and its result is filled in.
  [[nodiscard]] bool advance() {
    std::array<char, 4096> part;
    const ssize_t size = ::read(m_output.get(), part.data(), part.size());
    if (size < 0 && errno == EINTR) return false;
    if (size > 0) {
      m_failure.append(part.data(), static_cast<std::size_t>(size));
      return false;
    }
    end();
    return true;
  }

  [[nodiscard]] bool failed() const { return m_case.end == ScenarioCase::End::failed; }

 private:
  int reap() {
    int status = 0;
    while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) continue;
    m_process = -1;
    return status;
  }

  void end() {
    const int status = reap();
    const bool passed = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    m_case.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_start);
    m_case.end = passed ? ScenarioCase::End::passed : ScenarioCase::End::failed;
    if (WIFSIGNALED(status)) {
      m_failure += escapedLine(m_case.file) + ": the telephone's process was ended by signal " +
                   std::to_string(WTERMSIG(status)) + '\n';
    } else if (!passed && m_failure.empty()) {
      m_failure = escapedLine(m_case.file) + ": the telephone's process ended with status " +
                  std::to_string(WEXITSTATUS(status)) + '\n';
    }
    m_case.failure = std::move(m_failure);
  }

  ScenarioCase& m_case;
  const Clock::time_point m_start = Clock::now();
  pid_t m_process = -1;  // -1: reaped
  Descriptor m_output;
  std::string m_failure;
};

using Running = std::vector<std::unique_ptr<RunningCase>>;

// Waits until a case can advance. Takes the first that has ended out of the list: whether it
// failed.
std::optional<bool> nextEnd(Running& running, const Interruption& interruption) {
  std::vector<pollfd> polled;
  for (const auto& each : running) polled.push_back({each->output(), POLLIN, 0});
  if (interruption.wait(polled) < 0) return std::nullopt;  // EINTR
  for (std::size_t i = 0; i < running.size(); ++i) {
    if (polled[i].revents == 0 || !running[i]->advance()) continue;
    const bool failed = running[i]->failed();
    running.erase(running.begin() + static_cast<std::ptrdiff_t>(i));
    return failed;
  }
  return std::nullopt;
}

}  // namespace

int runCases(Plugin& plugin, std::vector<ScenarioCase>& cases, const SuiteOptions& options,
             const std::function<void()>& ended) {
  const Interruption interruption;
  const CommonFolder folder;
  Running running;
  auto next = cases.begin();
  while ((next != cases.end() || !running.empty()) && g_interruption == 0) {
    while (next != cases.end() && running.size() < static_cast<std::size_t>(options.jobs)) {
      running.push_back(std::make_unique<RunningCase>(plugin, *next++, interruption));
    }
    const std::optional<bool> failed = nextEnd(running, interruption);
    if (!failed) continue;
    ended();
    if (*failed && !options.keepGoing) next = cases.end();
  }
  return g_interruption;
}

}  // namespace host
