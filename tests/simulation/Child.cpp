#include "simulation/Child.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace simulation {
namespace {

[[noreturn]] void beChild(int from, int to, const std::function<void()>& doing) {
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  dup2(from, to);
  doing();
  _exit(0);
}

std::string allOf(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t length; (length = read(descriptor, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(length));
  }
  return text;
}

}  // namespace

End endOf(int descriptor, const std::function<void()>& doing) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  const pid_t child = fork();
  if (child == 0) beChild(ends[1], descriptor, doing);
  close(ends[1]);
  std::string text = child < 0 ? "no child" : allOf(ends[0]);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), std::move(text)};
}

}  // namespace simulation
