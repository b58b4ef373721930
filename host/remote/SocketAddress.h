#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <filesystem>

namespace host {

// A Unix socket's address for bind and connect. Immutable.
// Failure: host::Error from the constructor for a path that is too long for the system.
class SocketAddress {
 public:
  explicit SocketAddress(const std::filesystem::path& file);

  [[nodiscard]] const sockaddr* get() const;
  [[nodiscard]] socklen_t size() const { return sizeof m_address; }

 private:
  sockaddr_un m_address{};
};

// The default path of the control socket: that of the call socket with ".control" added.
[[nodiscard]] inline std::filesystem::path controlSocketBeside(const std::filesystem::path& calls) {
  return calls.native() + ".control";
}

}  // namespace host
