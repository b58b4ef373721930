#include "SystemCalls.h"

#include <sched.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace bench {
namespace {

constexpr int kCallStop = SIGTRAP | 0x80;  // as PTRACE_O_TRACESYSGOOD marks it
constexpr unsigned long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE;

}  // namespace

SystemCalls::SystemCalls(pid_t process)
    : m_tracer([this, process](const std::stop_token& stop) { trace(stop, process); }) {
  m_seized.wait();
  if (!m_failure.empty()) throw std::runtime_error(m_failure);
}

void SystemCalls::seizeThreads(pid_t process) {
  for (const auto& task :
       std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    const pid_t thread = std::stoi(task.path().filename());
    if (ptrace(PTRACE_SEIZE, thread, 0, kOptions) != 0 ||
        ptrace(PTRACE_INTERRUPT, thread, 0, 0) != 0) {
      throw std::runtime_error(std::string("system calls cannot be traced: ") +
                               std::strerror(errno) + "; run it where ptrace is allowed");
    }
  }
}

// When the tracer thread ends, the kernel detaches it, and the traced threads continue.
void SystemCalls::trace(const std::stop_token& stop, pid_t process) {
  try {
    seizeThreads(process);
  } catch (const std::exception& error) {
    m_failure = error.what();
  }
  m_seized.count_down();
  while (m_failure.empty() && !stop.stop_requested()) {
    int status = 0;
    const pid_t thread = waitpid(-1, &status, __WALL | __WNOTHREAD | WNOHANG);
    thread > 0 ? resume(thread, status) : static_cast<void>(sched_yield());
  }
}

// Forwards a signal that was sent to the thread.
void SystemCalls::resume(pid_t thread, int status) {
  if (!WIFSTOPPED(status)) return;
  const bool isCallStop = WSTOPSIG(status) == kCallStop;
  const bool isTracingStop = isCallStop || status >> 16 != 0;
  if (isCallStop) count(thread);
  ptrace(PTRACE_SYSCALL, thread, 0, isTracingStop ? 0 : WSTOPSIG(status));
}

// A thread stops when a call begins and when it ends.
void SystemCalls::count(pid_t thread) {
  __ptrace_syscall_info info{};
  ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info);
  if (info.op != PTRACE_SYSCALL_INFO_ENTRY) return;
  ++m_all;
  if (info.entry.nr == SYS_fsync || info.entry.nr == SYS_fdatasync) ++m_syncs;
}

}  // namespace bench
