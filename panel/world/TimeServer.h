#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace panel {

// A time server on the loopback address (SNTP, RFC 4330) that tells the machine's time, a wrong
// time, or nothing. Owner: the panel. Thread: the server's. Failure: the constructor throws
// host::Error when the port is taken.
class TimeServer {
 public:
  TimeServer(boost::asio::io_context& context, std::uint16_t port);

  // error: added to the machine's time.
  void answer(std::chrono::seconds error);
  void beSilent() { m_silent = true; }

  [[nodiscard]] bool silent() const { return m_silent; }
  [[nodiscard]] std::chrono::seconds error() const { return m_error; }

 private:
  static constexpr std::size_t kPacket = 48;  // bytes

  void receive();
  void reply();

  boost::asio::ip::udp::socket m_socket;
  boost::asio::ip::udp::endpoint m_client;
  std::array<unsigned char, 512> m_request{};
  std::array<unsigned char, kPacket> m_reply{};
  std::chrono::seconds m_error{0};
  bool m_silent = false;
};

}  // namespace panel
