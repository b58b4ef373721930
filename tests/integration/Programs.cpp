#include "integration/Programs.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "support/FileContent.h"

namespace integration {
namespace {

bool redirect(int standard, const char* file, int flags) {
  constexpr mode_t kMode = 0600;
  const int descriptor = open(file, flags | O_CLOEXEC, kMode);
  return descriptor >= 0 && dup2(descriptor, standard) == standard;
}

using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

bool exchange(long call, Capabilities& capabilities) {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  return syscall(call, &header, capabilities.data()) == 0;
}

// True: neither this process nor the program that it executes can set the machine's clock. An exec
// gives root all capabilities of the bounding set. A process that may not change that set gives up
// gaining any privilege instead.
bool giveUpTheClock() {
  constexpr std::size_t kWord = CAP_SYS_TIME / 32;
  constexpr unsigned kBit = 1U << (CAP_SYS_TIME % 32);
  Capabilities held{};
  if (!exchange(SYS_capget, held)) return false;
  auto& sets = held[kWord];
  for (auto* const set : {&sets.effective, &sets.permitted, &sets.inheritable}) *set &= ~kBit;
  if (!exchange(SYS_capset, held) || !exchange(SYS_capget, held)) return false;
  if (((sets.effective | sets.permitted | sets.inheritable) & kBit) != 0) return false;
  prctl(PR_CAPBSET_DROP, CAP_SYS_TIME, 0, 0, 0);
  return prctl(PR_CAPBSET_READ, CAP_SYS_TIME, 0, 0, 0) == 0 ||
         prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

// The new process, which shares this one's memory until exec and may use only async-signal-safe
// calls. The kernel kills it when the thread that started it ends, so that no test leaves a program
// behind.
[[noreturn]] void become(char* const* arguments, const char* out, const char* err, pid_t parent,
                         int failures) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);
  signal(SIGINT, SIG_DFL);  // a shell ignores it for what it starts in the background
  if (giveUpTheClock() && redirect(0, "/dev/null", O_RDONLY) && redirect(1, out, kFlags) &&
      redirect(2, err, kFlags)) {
    execv(arguments[0], arguments);
  }
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(failures, &error, sizeof error);
  _exit(1);
}

// The errno for which the process could not execute the program; 0 when it could.
int failureFrom(const std::array<int, 2>& failures) {
  int error = 0;
  close(failures[1]);
  [[maybe_unused]] const ssize_t got = read(failures[0], &error, sizeof error);
  close(failures[0]);
  return error;
}

}  // namespace

Words inShell(const std::string& redirections, const Words& words) {
  Words all = {"/bin/sh", "-c", "exec \"$@\" " + redirections, "sh"};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

Program::Program(const std::filesystem::path& folder, const std::string& name, const Words& words)
    : m_out(folder / (name + ".out")), m_err(folder / (name + ".err")) {
  std::vector<std::string> copies(words);
  std::vector<char*> arguments;
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  std::array<int, 2> failures{};
  if (pipe2(failures.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  const pid_t parent = getpid();
  m_id = vfork();  // a fork of a large test program takes a millisecond
  if (m_id == 0) become(arguments.data(), m_out.c_str(), m_err.c_str(), parent, failures[1]);
  const int forkError = m_id < 0 ? errno : 0;
  const int error = std::max(forkError, failureFrom(failures));
  if (error == 0) return;
  if (m_id > 0) waitpid(m_id, nullptr, 0);
  throw std::system_error(error, std::generic_category(), words.front());
}

Program::~Program() {
  if (m_id > 0) static_cast<void>(wait(std::chrono::seconds(0)));
}

// After wait() there is no id any more, and kill(-1) would signal every process.
pid_t Program::running() const {
  if (m_id <= 0) throw std::logic_error("the program has been waited for");
  return m_id;
}

void Program::signal(int number) const {
  kill(running(), number);
  if (number == SIGSTOP) {
    siginfo_t stopped{};
    waitid(P_PID, static_cast<id_t>(m_id), &stopped, WSTOPPED | WEXITED | WNOWAIT);
  }
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
  if (!ends(limit)) kill(running(), SIGKILL);
  int state = 0;
  waitpid(m_id, &state, 0);
  m_id = -1;
  const int status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
  return {status, out(), err()};
}

bool Program::says(const std::string& text, std::size_t from) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  bool last = false;  // after its end, read once more what it wrote before
  while (err().find(text, from) == std::string::npos) {
    if (last) return false;
    last = ends(std::chrono::milliseconds(1)) || std::chrono::steady_clock::now() > deadline;
  }
  return true;
}

std::string Program::out() const {
  return support::contentOf(m_out);
}

std::string Program::err() const {
  return support::contentOf(m_err);
}

}  // namespace integration
