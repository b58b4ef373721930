#pragma once

#include <sys/socket.h>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <chrono>
#include <string>

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
  asio::io_context m_loop;
  asio::ip::udp::socket m_socket;
  asio::ip::udp::socket m_other;
  std::string m_port;
  asio::ip::udp::endpoint m_client;
};

}  // namespace host::ntp
