#include "FloorSocket.h"

#include <sys/socket.h>

#include <cerrno>
#include <system_error>

#include "remote/SocketAddress.h"

namespace bench {
namespace {

std::system_error failure(const char* what) {
  return {errno, std::generic_category(), what};
}

}  // namespace

host::Descriptor listenAt(const std::filesystem::path& file) {
  host::Descriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const host::SocketAddress address(file);
  if (!listener.valid() || ::bind(listener.get(), address.get(), address.size()) != 0 ||
      ::listen(listener.get(), SOMAXCONN) != 0) {
    throw failure("listen");
  }
  return listener;
}

host::Descriptor acceptFrom(const host::Descriptor& listener) {
  host::Descriptor client(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!client.valid()) throw failure("accept");
  return client;
}

}  // namespace bench
