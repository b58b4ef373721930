#include "host/ntpclient/ChildProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <stdexcept>

namespace host::ntp {
namespace {

constexpr int kLimit = 20'000;  // milliseconds

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool isReady(int descriptor) {
  pollfd waited{descriptor, POLLIN, 0};
  return ::poll(&waited, 1, kLimit) == 1;
}

}  // namespace

ChildProgram::ChildProgram(std::vector<std::string> arguments, std::vector<std::string> environment,
                           int channel) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  m_errors.reset(ends[0]);
  const Descriptor written(ends[1]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, written.get(), STDERR_FILENO);
  if (channel >= 0) posix_spawn_file_actions_adddup2(&actions, channel, kChannel);
  const int error = posix_spawn(&m_child, arguments.front().c_str(), &actions, nullptr,
                                pointersTo(arguments).data(), pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("posix_spawn " + arguments.front());
}

ChildProgram::~ChildProgram() {
  if (m_child < 0) return;
  kill(SIGKILL);
  ::waitpid(m_child, nullptr, 0);
}

void ChildProgram::kill(int signal) const {
  if (m_child >= 0) ::kill(m_child, signal);
}

std::optional<std::string> ChildProgram::line() {
  for (;;) {
    const std::size_t end = m_read.find('\n');
    if (end != std::string::npos) {
      std::string line = m_read.substr(0, end);
      m_read.erase(0, end + 1);
      return line;
    }
    std::array<char, 256> part;
    if (!isReady(m_errors.get())) return std::nullopt;
    const ssize_t got = ::read(m_errors.get(), part.data(), part.size());
    if (got <= 0) return std::nullopt;
    m_read.append(part.data(), static_cast<std::size_t>(got));
  }
}

std::vector<std::string> ChildProgram::lines() {
  std::vector<std::string> all;
  while (auto next = line()) all.push_back(std::move(*next));
  return all;
}

std::optional<int> ChildProgram::wait() {
  const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, m_child, 0)));
  if (!isReady(process.get())) return std::nullopt;
  int status = 0;
  ::waitpid(m_child, &status, 0);
  m_child = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace host::ntp
