#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <optional>
#include <string>

#include "base/Descriptor.h"
#include "host/ntpclient/SntpAnswer.h"

namespace host::ntp {

inline constexpr std::chrono::milliseconds kLong{20'000};  // the deadline of what must happen

// A time server that says what the test wants, on a loopback port of its own.
class FakeSntpServer {
 public:
  explicit FakeSntpServer(int family = AF_INET);

  [[nodiscard]] const std::string& port() const { return m_port; }

  // The next request, within kLong.
  [[nodiscard]] std::optional<Bytes> receive();

  // To who asked last; from the server's port, or from another one of the same address.
  void answer(const Bytes& packet) const;
  void answerFromElsewhere(const Bytes& packet) const;

 private:
  void send(int socket, const Bytes& packet) const;

  Descriptor m_socket;
  Descriptor m_other;
  std::string m_port;
  sockaddr_storage m_client{};
  socklen_t m_clientSize = 0;
};

}  // namespace host::ntp
