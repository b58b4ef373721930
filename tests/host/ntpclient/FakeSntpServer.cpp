#include "host/ntpclient/FakeSntpServer.h"

#include <poll.h>

#include <stdexcept>

namespace host::ntp {
namespace {

const sockaddr* plain(const sockaddr_storage& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

// At any port of the loopback address.
Descriptor boundSocket(int family) {
  sockaddr_storage address{};
  address.ss_family = static_cast<sa_family_t>(family);
  if (family == AF_INET) {
    reinterpret_cast<sockaddr_in*>(&address)->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  } else {
    reinterpret_cast<sockaddr_in6*>(&address)->sin6_addr = in6addr_loopback;
  }
  Descriptor socket(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (::bind(socket.get(), plain(address), sizeof address) != 0) {
    throw std::runtime_error("cannot bind a socket to the loopback address");
  }
  return socket;
}

// Both families keep the port at the same place.
std::string portOf(const Descriptor& socket) {
  sockaddr_in6 address{};
  socklen_t size = sizeof address;
  ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
  return std::to_string(ntohs(address.sin6_port));
}

}  // namespace

FakeSntpServer::FakeSntpServer(int family)
    : m_socket(boundSocket(family)), m_other(boundSocket(family)), m_port(portOf(m_socket)) {}

Bytes FakeSntpServer::receive() {
  pollfd waited{m_socket.get(), POLLIN, 0};
  if (::poll(&waited, 1, static_cast<int>(kLong.count())) != 1) {
    throw std::runtime_error("no request");
  }
  Bytes request(512);
  m_clientSize = sizeof m_client;
  const ssize_t size = ::recvfrom(m_socket.get(), request.data(), request.size(), 0,
                                  reinterpret_cast<sockaddr*>(&m_client), &m_clientSize);
  if (size < 0) throw std::runtime_error("the request cannot be received");
  request.resize(static_cast<std::size_t>(size));
  return request;
}

void FakeSntpServer::send(const Descriptor& from, const Bytes& packet) const {
  const ssize_t sent =
      ::sendto(from.get(), packet.data(), packet.size(), 0, plain(m_client), m_clientSize);
  if (sent != static_cast<ssize_t>(packet.size())) {
    throw std::runtime_error("the answer cannot be sent");
  }
}

void FakeSntpServer::answer(const Bytes& packet) {
  send(m_socket, packet);
}

void FakeSntpServer::answerFromElsewhere(const Bytes& packet) {
  send(m_other, packet);
}

}  // namespace host::ntp
