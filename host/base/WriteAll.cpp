#include "base/WriteAll.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace host {
namespace {

// If this fails, the next write tells why.
void waitForRoom(int descriptor) {
  pollfd waiting{descriptor, POLLOUT, 0};
  ::poll(&waiting, 1, -1);
}

}  // namespace

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      waitForRoom(descriptor);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace host
