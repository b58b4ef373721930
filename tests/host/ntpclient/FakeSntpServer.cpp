#include "host/ntpclient/FakeSntpServer.h"

#include <poll.h>

#include <stdexcept>

namespace host::ntp {
namespace {

sockaddr* generic(sockaddr_storage& address) {
  return static_cast<sockaddr*>(static_cast<void*>(&address));
}

sockaddr_storage loopback(int family, socklen_t& size) {
  sockaddr_storage storage{};
  if (family == AF_INET) {
    auto* const address = static_cast<sockaddr_in*>(static_cast<void*>(&storage));
    address->sin_family = AF_INET;
    address->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    size = sizeof *address;
  } else {
    auto* const address = static_cast<sockaddr_in6*>(static_cast<void*>(&storage));
    address->sin6_family = AF_INET6;
    address->sin6_addr = in6addr_loopback;
    size = sizeof *address;
  }
  return storage;
}

Descriptor boundSocket(int family) {
  Descriptor descriptor(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  socklen_t size = 0;
  sockaddr_storage address = loopback(family, size);
  if (::bind(descriptor.get(), generic(address), size) != 0) throw std::runtime_error("bind");
  return descriptor;
}

// Both families keep the port in the same place.
int portOf(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (::getsockname(socket, generic(address), &size) != 0) throw std::runtime_error("getsockname");
  return ntohs(static_cast<sockaddr_in*>(static_cast<void*>(&address))->sin_port);
}

}  // namespace

FakeSntpServer::FakeSntpServer(int family)
    : m_socket(boundSocket(family)),
      m_other(boundSocket(family)),
      m_port(std::to_string(portOf(m_socket.get()))) {}

Bytes FakeSntpServer::receive() {
  pollfd waited{m_socket.get(), POLLIN, 0};
  if (::poll(&waited, 1, static_cast<int>(kLong.count())) != 1) {
    throw std::runtime_error("no request");
  }
  Bytes request(512);
  m_clientSize = sizeof m_client;
  const ssize_t got = ::recvfrom(m_socket.get(), request.data(), request.size(), 0,
                                 generic(m_client), &m_clientSize);
  if (got < 0) throw std::runtime_error("recvfrom");
  request.resize(static_cast<std::size_t>(got));
  return request;
}

void FakeSntpServer::answer(const Bytes& packet) const {
  send(m_socket.get(), packet);
}

void FakeSntpServer::answerFromElsewhere(const Bytes& packet) const {
  send(m_other.get(), packet);
}

void FakeSntpServer::send(int socket, const Bytes& packet) const {
  sockaddr_storage client = m_client;
  if (::sendto(socket, packet.data(), packet.size(), 0, generic(client), m_clientSize) < 0) {
    throw std::runtime_error("sendto");
  }
}

}  // namespace host::ntp
