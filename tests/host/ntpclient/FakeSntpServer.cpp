#include "host/ntpclient/FakeSntpServer.h"

#include <poll.h>
#include <sys/socket.h>

#include <asio/buffer.hpp>
#include <stdexcept>

namespace host::ntp {
namespace {

using asio::ip::udp;

// Asio's own sockets would be inherited by the programs that a test starts.
udp::socket boundSocket(asio::io_context& loop, int family) {
  const udp protocol = family == AF_INET ? udp::v4() : udp::v6();
  const asio::ip::address loopback = family == AF_INET
                                         ? asio::ip::address(asio::ip::address_v4::loopback())
                                         : asio::ip::address_v6::loopback();
  udp::socket socket(loop, protocol, ::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  socket.bind({loopback, 0});
  return socket;
}

}  // namespace

FakeSntpServer::FakeSntpServer(int family)
    : m_socket(boundSocket(m_loop, family)),
      m_other(boundSocket(m_loop, family)),
      m_port(std::to_string(m_socket.local_endpoint().port())) {}

Bytes FakeSntpServer::receive() {
  pollfd waited{m_socket.native_handle(), POLLIN, 0};
  if (::poll(&waited, 1, static_cast<int>(kLong.count())) != 1) {
    throw std::runtime_error("no request");
  }
  Bytes request(512);
  request.resize(m_socket.receive_from(asio::buffer(request), m_client));
  return request;
}

void FakeSntpServer::answer(const Bytes& packet) {
  m_socket.send_to(asio::buffer(packet), m_client);
}

void FakeSntpServer::answerFromElsewhere(const Bytes& packet) {
  m_other.send_to(asio::buffer(packet), m_client);
}

}  // namespace host::ntp
