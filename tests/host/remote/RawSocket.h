#pragma once

#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/Descriptor.h"
#include "remote/Frame.h"
#include "remote/SocketAddress.h"

namespace host {

// `count` frames of one kind and payload, with ids from 0.
inline std::string frames(FrameKind kind, std::string_view payload, std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += encodeFrame({kind, static_cast<std::uint32_t>(i), payload});
  }
  return bytes;
}

// A client that sends any bytes at any time.
class RawSocket {
 public:
  explicit RawSocket(const std::filesystem::path& file)
      : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const SocketAddress address(file);
    if (::connect(m_descriptor.get(), address.get(), address.size()) != 0) {
      throw std::runtime_error("cannot connect");
    }
  }

  // False when the server has disconnected.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(m_descriptor.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent < 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  // Waits for the server to disconnect; drops what it sends.
  bool isDisconnected(std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    char bytes[4096];
    for (;;) {
      const auto left = deadline - std::chrono::steady_clock::now();
      const auto wait = std::chrono::ceil<std::chrono::milliseconds>(left).count();
      pollfd waited{m_descriptor.get(), POLLIN, 0};
      if (wait <= 0 || ::poll(&waited, 1, static_cast<int>(wait)) <= 0) return false;
      if (::recv(m_descriptor.get(), bytes, sizeof bytes, 0) <= 0) return true;
    }
  }

 private:
  Descriptor m_descriptor;
};

}  // namespace host
