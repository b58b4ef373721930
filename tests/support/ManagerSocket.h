#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <string>

#include "base/Descriptor.h"

namespace support {

// The socket at which a service manager gets notices. Owner: a test.
class ManagerSocket {
 public:
  // name: "/PATH", or "@NAME" for an abstract address, as in $NOTIFY_SOCKET.
  explicit ManagerSocket(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(name.begin(), name.end(), address.sun_path);
    if (name.front() == '@') address.sun_path[0] = '\0';
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const auto* const at = static_cast<const sockaddr*>(static_cast<const void*>(&address));
    EXPECT_EQ(::bind(m_socket.get(), at, size), 0) << name;
  }

  // The next notice; empty when none comes within the limit.
  [[nodiscard]] std::string notice(std::chrono::milliseconds limit) const {
    pollfd coming{m_socket.get(), POLLIN, 0};
    ::poll(&coming, 1, static_cast<int>(limit.count()));
    std::array<char, 100> bytes{};
    const ssize_t got = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    return {bytes.data(), got > 0 ? static_cast<std::size_t>(got) : 0};
  }

 private:
  const host::Descriptor m_socket{::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
};

}  // namespace support
