#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace simulation {

// The NTP client's end of the report pipe. Between two calls the service's listener waits for bytes
// from this end, so that the service does nothing on its own: with support::ListenerPipe, a
// listener that returns from a report runs at the same time as the next step.
class HeldPipe {
 public:
  HeldPipe() = default;
  ~HeldPipe() { hangUp(); }
  HeldPipe(const HeldPipe&) = delete;
  HeldPipe& operator=(const HeldPipe&) = delete;

  // Makes a fresh pipe where the service will look for it.
  static void makePipe() {
    must(unlink(kPipe) == 0 || errno == ENOENT, "unlink");
    must(mkfifo(kPipe, 0600) == 0, "mkfifo");
  }
  // Waits until the listener has opened the pipe.
  void awaitListener() {
    do {
      m_writer = open(kPipe, O_WRONLY | O_CLOEXEC);
    } while (m_writer < 0 && errno == EINTR);
    must(m_writer >= 0, "open");
  }
  // Sends one value, and waits until the listener has handled it: only then does it open the next
  // pipe.
  void report(std::uint32_t seconds) {
    makePipe();
    must(write(m_writer, &seconds, sizeof seconds) == sizeof seconds, "write");
    hangUp();
    awaitListener();
  }
  // Closes this end: the listener's read returns.
  void hangUp() {
    if (m_writer >= 0) close(m_writer);
    m_writer = -1;
  }

 private:
  static constexpr const char* kPipe = "ipc/ntpclient";
  static void must(bool done, const char* what) {
    if (!done) throw std::system_error(errno, std::generic_category(), what);
  }

  int m_writer = -1;
};

}  // namespace simulation
