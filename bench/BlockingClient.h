#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Descriptor.h"

namespace bench {

// A client's blocking connection to a Unix stream socket. Owner: a measurement.
// Failure: std::system_error; std::runtime_error when the server disconnects, or does not answer
// for ten seconds.
class BlockingClient {
 public:
  // Waits up to ten seconds for a server to listen.
  explicit BlockingClient(const std::filesystem::path& socket);

  void send(std::string_view bytes) const;
  // Receives exactly that many bytes and drops them. REQUIRES: at most 4096.
  void drop(std::size_t bytes) const;
  // Receives one frame, with its header.
  [[nodiscard]] std::string frame() const;
  // Sends the request and receives one frame.
  std::string ask(std::string_view request) const;
  // The same for a control request. Throws std::runtime_error, the reply, when it is refused.
  void control(std::string_view json) const;

 private:
  void receive(char* to, std::size_t bytes) const;

  host::Descriptor m_descriptor;
};

// The bytes of a call without parameters, and of a control request.
[[nodiscard]] std::string callOf(const char* method);
[[nodiscard]] std::string controlOf(std::string_view json);

}  // namespace bench
