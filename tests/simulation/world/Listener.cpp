#include "simulation/world/Listener.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
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
  do {
    m_writer = open(kPipe, O_WRONLY | O_CLOEXEC);
  } while (m_writer < 0 && errno == EINTR);  // whoever watches the time of a test sends signals
  must(m_writer >= 0, "open");
}

void Listener::report(std::uint32_t seconds) {
  std::array<char, sizeof seconds> bytes{};
  std::memcpy(bytes.data(), &seconds, sizeof seconds);
  send({bytes.data(), bytes.size()});
}

// The next opening is of another pipe, which the listener reaches only when it is done with this.
void Listener::send(std::string_view bytes) {
  lay();
  const auto size = static_cast<ssize_t>(bytes.size());
  must(write(m_writer, bytes.data(), bytes.size()) == size, "write");
  hangUp();
  meet();
}

void Listener::hangUp() {
  if (m_writer >= 0) close(m_writer);
  m_writer = -1;
}

}  // namespace simulation
