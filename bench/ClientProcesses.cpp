#include "ClientProcesses.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

bool endedWell(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return status == 0;
}

}  // namespace

ClientProcesses::Pipe::Pipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  from.reset(ends[0]);
  to.reset(ends[1]);
}

ClientProcesses::ClientProcesses() = default;

ClientProcesses::~ClientProcesses() {
  for (const pid_t process : m_running) kill(process, SIGKILL);
  for (const pid_t process : m_running) static_cast<void>(endedWell(process));
}

void ClientProcesses::add(const std::function<void()>& work) {
  Pipe ready;
  m_running.reserve(m_running.size() + 1);  // none is made that could not be remembered
  const pid_t process = fork();
  if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process == 0) live(work, ready);
  m_running.push_back(process);
  ready.to.reset();
  char waits = 0;
  if (read(ready.from.get(), &waits, 1) != 1) throw std::runtime_error("a client did not start");
}

// Whatever happens here ends here: the measurement is to go on in one process only.
void ClientProcesses::live(const std::function<void()>& work, const Pipe& ready) {
  try {
    m_gate.to.reset();
    char gate = 0;
    if (write(ready.to.get(), &gate, 1) != 1 || read(m_gate.from.get(), &gate, 1) != 0) _exit(1);
    work();
    _exit(0);
  } catch (...) {
    _exit(1);
  }
}

void ClientProcesses::release() {
  m_gate.to.reset();
}

void ClientProcesses::join() {
  while (!m_running.empty()) {
    const pid_t process = m_running.back();
    m_running.pop_back();
    if (!endedWell(process)) throw std::runtime_error("a client has failed");
  }
}

}  // namespace bench
