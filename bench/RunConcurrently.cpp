#include "RunConcurrently.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "base/Descriptor.h"

namespace bench {
namespace {

// Runs in the new process, and exits: only the original process goes on measuring.
[[noreturn]] void workAndExit(int gate, const std::function<void()>& work) {
  try {
    char byte = 0;
    if (::read(gate, &byte, 1) != 0) _exit(1);
    work();
    _exit(0);
  } catch (const std::exception&) {
    _exit(1);
  }
}

bool succeeded(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return status == 0;
}

}  // namespace

double runConcurrently(std::size_t count, const std::function<void(std::size_t)>& work) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const host::Descriptor closed(ends[0]);
  host::Descriptor gate(ends[1]);
  std::vector<pid_t> processes;
  for (std::size_t i = 0; i < count; ++i) {
    const pid_t process = fork();
    if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (process == 0) {
      gate.reset();
      workAndExit(closed.get(), [&] { work(i); });
    }
    processes.push_back(process);
  }
  const auto begin = std::chrono::steady_clock::now();
  gate.reset();
  std::size_t good = 0;
  for (const pid_t process : processes) good += succeeded(process) ? 1U : 0U;
  if (good != count) throw std::runtime_error("a concurrent process failed");
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace bench
