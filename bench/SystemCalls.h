#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <latch>
#include <string>
#include <thread>

namespace bench {

// Counts the system calls of all threads of a child process during its lifetime, by tracing them.
// Owner: a measurement; the process outlives it. Failure: std::runtime_error from the constructor.
class SystemCalls {
 public:
  explicit SystemCalls(pid_t process);

  [[nodiscard]] std::size_t all() const { return m_all; }
  [[nodiscard]] std::size_t syncs() const { return m_syncs; }  // fsync, fdatasync

 private:
  void trace(const std::stop_token& stop, pid_t process);
  void seizeThreads(pid_t process);
  void resume(pid_t thread, int status);
  void count(pid_t thread);

  std::atomic<std::size_t> m_all{0};
  std::atomic<std::size_t> m_syncs{0};
  std::string m_failure;
  std::latch m_seized{1};
  std::jthread m_tracer;  // makes all ptrace calls: the kernel accepts them only from the thread
                          // that attached
};

}  // namespace bench
