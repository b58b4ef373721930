#include "remote/FrameSocket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "base/MillisecondsUntil.h"
#include "remote/SocketAddress.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kSendLimit{10};

// False at the deadline.
bool waitFor(int descriptor, short events, FrameSocket::Deadline deadline) {
  for (;;) {
    pollfd waited{descriptor, events, 0};
    const int ready = ::poll(&waited, 1, millisecondsUntil(deadline));
    if (ready > 0) return true;
    if (ready == 0) return false;
    if (errno != EINTR)
      throw HostGone(std::string("cannot wait for the host: ") + std::strerror(errno));
  }
}

bool isTemporary(int error) {
  return error == EAGAIN || error == EINTR;
}

Descriptor connectTo(const std::filesystem::path& file) {
  const SocketAddress address(file);
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.valid() || ::connect(socket.get(), address.get(), address.size()) != 0) {
    if (errno == EACCES) throw NotAllowed("no permission for the host's socket " + file.string());
    throw NoHost("no host at " + file.string() + ": " + std::strerror(errno));
  }
  return socket;
}

}  // namespace

FrameSocket::FrameSocket(const std::filesystem::path& socket) : m_descriptor(connectTo(socket)) {}

void FrameSocket::send(const Frame& frame) {
  const std::string bytes = encodeFrame(frame);
  const Deadline deadline = Clock::now() + kSendLimit;
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const ssize_t sent =
        ::send(m_descriptor.get(), rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(sent));
    } else if (!isTemporary(errno)) {
      throw HostGone(std::string("the host disconnected: ") + std::strerror(errno));
    } else if (!waitFor(m_descriptor.get(), POLLOUT, deadline)) {
      throw HostGone("the host did not read a request within " +
                     std::to_string(kSendLimit.count()) + " s");
    }
  }
}

bool FrameSocket::receive(Frame& frame, Deadline deadline) {
  for (;;) {
    switch (m_reader.next(frame)) {
      case FrameReader::Outcome::frame:
        return true;
      case FrameReader::Outcome::broken:
        throw HostGone("not a clock host: " + m_reader.fault());
      case FrameReader::Outcome::needMore:
        if (!waitFor(m_descriptor.get(), POLLIN, deadline)) return false;
        fill();
    }
  }
}

void FrameSocket::fill() {
  const auto space = m_reader.space();
  const ssize_t got = ::recv(m_descriptor.get(), space.data(), space.size(), MSG_DONTWAIT);
  if (got > 0) {
    m_reader.commit(static_cast<std::size_t>(got));
  } else if (got == 0) {
    throw HostGone("the host disconnected");
  } else if (!isTemporary(errno)) {
    throw HostGone(std::string("the host disconnected: ") + std::strerror(errno));
  }
}

void FrameSocket::finishSending() {
  static_cast<void>(::shutdown(m_descriptor.get(), SHUT_WR));
}

}  // namespace host
