#include "simulation/world/Listener.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace simulation {
namespace {

constexpr const char* kPipe = "ipc/ntpclient";

void must(bool done, const char* what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

void Listener::lay() {
  must(unlink(kPipe) == 0 || errno == ENOENT, "unlink");
  must(mkfifo(kPipe, 0600) == 0, "mkfifo");
}

void Listener::meet() {
  m_writer = open(kPipe, O_WRONLY | O_CLOEXEC);
  must(m_writer >= 0, "open");
}

// The next opening is of another pipe, which the listener reaches only when it is done with this.
void Listener::report(std::uint32_t seconds) {
  lay();
  must(write(m_writer, &seconds, sizeof seconds) == sizeof seconds, "write");
  hangUp();
  meet();
}

void Listener::hangUp() {
  if (m_writer >= 0) close(m_writer);
  m_writer = -1;
}

}  // namespace simulation
