#include "telephone/ChildProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "base/Error.h"
#include "base/PrintableText.h"

namespace panel {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kMostOutput = std::size_t{64} << 10;  // bytes

// Both outputs go to the pipe, the child's signals have their default actions, and what it starts
// is in its group.
pid_t spawn(const std::string& program, std::vector<std::string>& words, int output) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  pid_t process = -1;
  const int error =
      ::posix_spawn(&process, program.c_str(), &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw host::Error("cannot start " + host::quotedText(program) + ": " + std::strerror(error));
  }
  return process;
}

}  // namespace

ChildProgram::ChildProgram(const std::filesystem::path& program,
                           std::vector<std::string> arguments) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw host::Error("no pipe for " + program.filename().string() + "; too many files are open");
  }
  m_pipe.reset(ends[0]);
  const host::Descriptor output(ends[1]);
  arguments.insert(arguments.begin(), program.string());
  m_process = spawn(program.string(), arguments, output.get());
}

ChildProgram::~ChildProgram() {
  if (m_process > 0) static_cast<void>(finish(Deadline()));
}

bool ChildProgram::readTo(const std::string& text, Deadline deadline,
                          const std::stop_token& ending) {
  if (m_process < 0) return true;
  const std::stop_callback atEnd(ending, [this] { ::kill(-m_process, SIGKILL); });
  while (m_pipe.valid() && (text.empty() || !m_output.ends_with(text))) {
    if (!readSome(deadline)) return false;
  }
  return true;
}

void ChildProgram::interrupt() const {
  if (m_process > 0) ::kill(m_process, SIGINT);
}

int ChildProgram::finish(Deadline deadline, const std::stop_token& ending) {
  if (!readTo("", deadline, ending)) ::kill(-m_process, SIGKILL);
  while (m_process > 0 && ::waitpid(m_process, &m_status, 0) < 0 && errno == EINTR) continue;
  m_process = -1;
  return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 128 + WTERMSIG(m_status);
}

bool ChildProgram::readSome(Deadline deadline) {
  const auto left =
      std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
  pollfd polled{m_pipe.get(), POLLIN, 0};
  if (left <= 0 || ::poll(&polled, 1, static_cast<int>(left)) == 0) return false;
  std::array<char, 4096> some{};
  const ssize_t got = ::read(m_pipe.get(), some.data(), some.size());
  if (got <= 0) {
    m_pipe.reset();
  } else if (m_output.size() < kMostOutput) {
    m_output.append(some.data(), static_cast<std::size_t>(got));
  }
  return true;
}

}  // namespace panel
