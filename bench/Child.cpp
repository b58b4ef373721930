#include "Child.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace bench {
namespace {

constexpr int kEndLimit = 10'000;  // milliseconds

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool endsInTime(pid_t id) {
  pollfd process{static_cast<int>(syscall(SYS_pidfd_open, id, 0)), POLLIN, 0};
  const bool ended = process.fd >= 0 && poll(&process, 1, kEndLimit) == 1;
  close(process.fd);
  return ended;
}

}  // namespace

Child::Child(std::vector<std::string> words, std::vector<std::string> environment) {
  const std::vector<char*> arguments = pointersTo(words);
  const std::vector<char*> variables = pointersTo(environment);
  posix_spawn_file_actions_t silent{};
  posix_spawn_file_actions_init(&silent);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&silent, descriptor, "/dev/null", O_RDWR, 0);
  }
  const int error =
      posix_spawn(&m_id, arguments[0], &silent, nullptr, arguments.data(), variables.data());
  posix_spawn_file_actions_destroy(&silent);
  if (error != 0) throw std::system_error(error, std::generic_category(), words.front());
}

Child::~Child() {
  kill(m_id, SIGTERM);
  if (!endsInTime(m_id)) kill(m_id, SIGKILL);
  while (waitpid(m_id, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace bench
