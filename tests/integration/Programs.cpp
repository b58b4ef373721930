#include "integration/Programs.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <system_error>

namespace integration {
namespace {

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The three standard descriptors of a new process.
class Redirection {
 public:
  Redirection(const std::string& out, const std::string& err) {
    posix_spawn_file_actions_init(&m_actions);
    posix_spawn_file_actions_addopen(&m_actions, 0, "/dev/null", O_RDONLY, 0);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&m_actions, 1, out.c_str(), kFlags, 0600);
    posix_spawn_file_actions_addopen(&m_actions, 2, err.c_str(), kFlags, 0600);
  }
  ~Redirection() { posix_spawn_file_actions_destroy(&m_actions); }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &m_actions; }

 private:
  posix_spawn_file_actions_t m_actions{};
};

}  // namespace

Program::Program(const std::filesystem::path& folder, const std::string& name, const Words& words)
    : m_out(folder / (name + ".out")), m_err(folder / (name + ".err")) {
  std::vector<std::string> copies(words);
  std::vector<char*> arguments;
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const Redirection redirection(m_out, m_err);
  const int error =
      posix_spawn(&m_id, arguments[0], redirection.get(), nullptr, arguments.data(), environ);
  if (error != 0) throw std::system_error(error, std::generic_category(), words.front());
}

Program::~Program() {
  if (m_id > 0) static_cast<void>(wait(std::chrono::seconds(0)));
}

void Program::signal(int number) const {
  kill(m_id, number);
}

bool Program::ends(std::chrono::milliseconds limit) const {
  const int process = static_cast<int>(syscall(SYS_pidfd_open, m_id, 0));
  if (process < 0) return false;
  pollfd waiting{process, POLLIN, 0};
  const bool ended = poll(&waiting, 1, static_cast<int>(limit.count())) == 1;
  close(process);
  return ended;
}

Outcome Program::wait(std::chrono::seconds limit) {
  if (!ends(limit)) kill(m_id, SIGKILL);
  int state = 0;
  waitpid(m_id, &state, 0);
  m_id = -1;
  const int status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
  return {status, out(), err()};
}

std::string Program::out() const {
  return contentOf(m_out);
}

std::string Program::err() const {
  return contentOf(m_err);
}

}  // namespace integration
