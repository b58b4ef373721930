#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>

namespace bench {

// Listens at a Unix socket. The descriptors stay open until the program ends.
// Failure: std::system_error; std::length_error for a path that is too long.
class Listener {
 public:
  explicit Listener(const std::string& file) : m_socket(::socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{AF_UNIX, {}};
    if (file.size() >= sizeof address.sun_path) throw std::length_error(file + ": too long");
    std::memcpy(address.sun_path, file.data(), file.size());
    if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(m_socket, SOMAXCONN) != 0) {
      throw failure("listen");
    }
  }

  [[nodiscard]] int accept() const {
    const int client = ::accept(m_socket, nullptr, nullptr);
    if (client < 0) throw failure("accept");
    return client;
  }

 private:
  static std::system_error failure(const char* what) {
    return {errno, std::generic_category(), what};
  }

  int m_socket;
};

}  // namespace bench
