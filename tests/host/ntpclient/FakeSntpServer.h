#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <string>

#include "base/Descriptor.h"
#include "host/ntpclient/SntpAnswer.h"

namespace host::ntp {

inline constexpr std::chrono::milliseconds kLong{20'000};  // for events that must happen

// A time server on a loopback port, which sends what the test wants.
class FakeSntpServer {
 public:
  explicit FakeSntpServer(int family = AF_INET);

  [[nodiscard]] const std::string& port() const { return m_port; }

  // The next request. Throws when none comes within kLong.
  [[nodiscard]] Bytes receive();

  // To the last client; from the server's port, or from another port of its address.
  void answer(const Bytes& packet);
  void answerFromElsewhere(const Bytes& packet);

  // Answers the next request with a good packet.
  void serve(std::uint32_t time) { answer(answerTo(nonceOf(receive()), time)); }

 private:
  void send(const Descriptor& from, const Bytes& packet) const;

  const Descriptor m_socket;
  const Descriptor m_other;
  const std::string m_port;
  sockaddr_storage m_client{};
  socklen_t m_clientSize = 0;
};

}  // namespace host::ntp
