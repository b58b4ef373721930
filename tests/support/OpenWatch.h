#pragma once

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>

namespace support {

// Watches whether any process opens a file.
// Owner: the test. Failure: throws std::system_error.
class OpenWatch {
 public:
  explicit OpenWatch(const std::string& path)
      : m_descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (inotify_add_watch(m_descriptor, path.c_str(), IN_OPEN) < 0)
      throw std::system_error(errno, std::generic_category(), path);
  }
  ~OpenWatch() { close(m_descriptor); }
  OpenWatch(const OpenWatch&) = delete;
  OpenWatch& operator=(const OpenWatch&) = delete;

  // Whether the file was opened since the construction, or is opened within the limit.
  [[nodiscard]] bool sees(std::chrono::milliseconds limit = {}) const {
    pollfd waited{m_descriptor, POLLIN, 0};
    return poll(&waited, 1, static_cast<int>(limit.count())) == 1;
  }

 private:
  const int m_descriptor;
};

}  // namespace support
