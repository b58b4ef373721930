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

// The three standard descriptors of the program.
class Silence {
 public:
  Silence() {
    posix_spawn_file_actions_init(&m_actions);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&m_actions, descriptor, "/dev/null", O_RDWR, 0);
    }
  }
  ~Silence() { posix_spawn_file_actions_destroy(&m_actions); }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &m_actions; }

 private:
  posix_spawn_file_actions_t m_actions{};
};

constexpr int kUntilItEnds = 10'000;  // milliseconds for a program that was asked to end

bool endsInTime(pid_t id) {
  const int process = static_cast<int>(syscall(SYS_pidfd_open, id, 0));
  if (process < 0) return false;
  pollfd waiting{process, POLLIN, 0};
  const bool ended = poll(&waiting, 1, kUntilItEnds) == 1;
  close(process);
  return ended;
}

}  // namespace

Child::Child(const std::vector<std::string>& words) {
  std::vector<std::string> copies(words);
  std::vector<char*> arguments;
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const Silence silence;
  const int error =
      posix_spawn(&m_id, arguments[0], silence.get(), nullptr, arguments.data(), environ);
  if (error != 0) throw std::system_error(error, std::generic_category(), words.front());
}

Child::~Child() {
  if (m_id < 0) return;
  kill(m_id, SIGTERM);
  if (!endsInTime(m_id)) kill(m_id, SIGKILL);
  waitForEnd();
}

void Child::waitForEnd() {
  while (waitpid(m_id, nullptr, 0) < 0 && errno == EINTR) {
  }
  m_id = -1;
}

}  // namespace bench
