#include "Instructions.h"

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

// Runs in the child, which stops itself before and after the work that is counted.
[[noreturn]] void runStopped(const std::function<void()>& work) {
  try {
    work();
    if (ptrace(PTRACE_TRACEME, 0, 0, 0) != 0) _exit(1);
    raise(SIGSTOP);
    work();
    raise(SIGSTOP);
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

// A child process that executes the work step by step. Owner: stepsOf. Destruction kills the child.
class Stepped {
 public:
  explicit Stepped(const std::function<void()>& work) : m_child(fork()) {
    if (m_child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (m_child == 0) runStopped(work);
  }
  ~Stepped() {
    kill(m_child, SIGKILL);
    waitpid(m_child, nullptr, 0);
  }
  Stepped(const Stepped&) = delete;
  Stepped& operator=(const Stepped&) = delete;

  // The signal that stopped the child: SIGTRAP after a step.
  int awaitStop() const {
    int status = 0;
    if (waitpid(m_child, &status, 0) != m_child || !WIFSTOPPED(status)) {
      throw std::runtime_error("instructions cannot be counted; run it where ptrace is allowed");
    }
    return WSTOPSIG(status);
  }
  void step() const {
    if (ptrace(PTRACE_SINGLESTEP, m_child, 0, 0) == 0) return;
    throw std::system_error(errno, std::generic_category(), "instructions cannot be counted");
  }

 private:
  const pid_t m_child;
};

// Includes the instructions that stopping the child takes.
std::size_t stepsOf(const std::function<void()>& work) {
  const Stepped child(work);
  child.awaitStop();
  std::size_t steps = 0;
  do {
    child.step();
    ++steps;
  } while (child.awaitStop() == SIGTRAP);
  return steps;
}

}  // namespace

std::size_t instructionsOf(const std::function<void()>& work) {
  return stepsOf(work) - stepsOf([] {});
}

}  // namespace bench
