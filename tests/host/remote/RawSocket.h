#pragma once

#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "remote/FrameSocket.h"

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
  explicit RawSocket(const std::filesystem::path& file) : m_socket(file) {}

  // False when the server has disconnected.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(m_socket.descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
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
      pollfd waited{m_socket.descriptor(), POLLIN, 0};
      if (wait <= 0 || ::poll(&waited, 1, static_cast<int>(wait)) <= 0) return false;
      if (::recv(m_socket.descriptor(), bytes, sizeof bytes, 0) <= 0) return true;
    }
  }

 private:
  FrameSocket m_socket;
};

}  // namespace host
