#include "apps/Readiness.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "Logging.h"
#include "base/LogLevels.h"
#include "base/WriteAll.h"

namespace host {
namespace {

constexpr const char* kManagerVariable = "NOTIFY_SOCKET";
constexpr int kFirstDescriptor = 3;  // those below are the standard ones

std::string takeManager() {
  const char* const socket = std::getenv(kManagerVariable);
  std::string name = socket == nullptr ? "" : socket;
  ::unsetenv(kManagerVariable);
  return name;
}

// One datagram to the manager. False: errno says why not.
bool sendTo(const std::string& manager, const char* state) {
  constexpr timeval kPatience{1, 0};
  sockaddr_un address{};
  if (manager.size() >= sizeof address.sun_path || !std::strchr("/@", manager.front())) {
    errno = EINVAL;
    return false;
  }
  address.sun_family = AF_UNIX;
  std::copy(manager.begin(), manager.end(), address.sun_path);
  if (manager.front() == '@') address.sun_path[0] = '\0';
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + manager.size());
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!socket.valid()) return false;
  ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
  const auto* const to = static_cast<const sockaddr*>(static_cast<const void*>(&address));
  return ::sendto(socket.get(), state, std::strlen(state), MSG_NOSIGNAL, to, size) >= 0;
}

}  // namespace

Readiness::Readiness(int descriptor) : m_descriptor(descriptor), m_manager(takeManager()) {
  if (m_descriptor.valid()) ::fcntl(m_descriptor.get(), F_SETFD, FD_CLOEXEC);
}

void Readiness::ready() {
  if (m_descriptor.valid() && !writeAll(m_descriptor.get(), "\n")) {
    logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "--ready-fd cannot be written: %s",
              std::strerror(errno));
  }
  m_descriptor.reset();
  notify("READY=1");
}

void Readiness::stopping() const {
  notify("STOPPING=1");
}

void Readiness::notify(const char* state) const {
  if (m_manager.empty() || sendTo(m_manager, state)) return;
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "the service manager at \"%s\" does not get %s: %s", m_manager.c_str(), state,
            std::strerror(errno));
}

std::string checkReadyDescriptor(int descriptor) {
  const std::string name = std::to_string(descriptor);
  if (descriptor < kFirstDescriptor) {
    return name + " is a standard descriptor; name one from 3 on, as in `--ready-fd 3 3>FILE`";
  }
  const int flags = ::fcntl(descriptor, F_GETFL);
  if (flags >= 0 && (flags & O_ACCMODE) != O_RDONLY) return "";
  return name + " is not open for writing; open it for the host, as in `--ready-fd " + name + ' ' +
         name + ">FILE`";
}

}  // namespace host
