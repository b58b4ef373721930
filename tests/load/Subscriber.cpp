#include "load/Subscriber.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <stdexcept>

#include "Method.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace load {
namespace {

using host::Frame;
using host::FrameKind;
using host::FrameReader;

constexpr int kSilenceLimit = 20'000;  // milliseconds

std::string observeCall() {
  Method method("observeTimeEvents", Method::call);
  std::stringstream stream;
  host::MessagePackCodec().encode(method, stream);
  const std::string payload = stream.str();
  return host::encodeFrame({FrameKind::call, 1, payload});
}

}  // namespace

Subscriber::Subscriber(const std::filesystem::path& socket, int registrations)
    : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const host::SocketAddress address(socket);
  if (::connect(m_socket.get(), address.get(), address.size()) != 0) {
    throw std::runtime_error("a subscriber cannot connect");
  }
  const std::string call = observeCall();
  for (int i = 0; i < registrations; ++i) send(call);
  awaitReplies(registrations);
}

void Subscriber::send(std::string_view bytes) {
  if (::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(bytes.size())) {
    throw std::runtime_error("a subscriber cannot send");
  }
}

// The clock stands still until all are registered: there is nothing to come but replies.
void Subscriber::awaitReplies(int count) {
  Frame frame;
  while (count > 0) {
    pollfd waiting{m_socket.get(), POLLIN, 0};
    if (::poll(&waiting, 1, kSilenceLimit) != 1 || !receive()) {
      throw std::runtime_error("a subscriber is not registered");
    }
    while (m_reader.next(frame) == FrameReader::Outcome::frame) --count;
  }
}

// False when there is nothing just now.
bool Subscriber::receive() {
  const auto space = m_reader.space();
  const ssize_t got = ::recv(m_socket.get(), space.data(), space.size(), MSG_DONTWAIT);
  if (got > 0) m_reader.commit(static_cast<std::size_t>(got));
  if (got == 0) throw std::runtime_error("the host has hung up on a subscriber that reads");
  return got > 0;
}

void Subscriber::read(const std::function<void(std::string_view)>& heard) {
  Frame frame;
  while (receive()) {
    while (m_reader.next(frame) == FrameReader::Outcome::frame) heard(frame.payload);
  }
}

bool Subscriber::isHungUp() const {
  pollfd asked{m_socket.get(), 0, 0};
  return ::poll(&asked, 1, 0) == 1;
}

std::size_t Subscriber::drain() {
  std::array<char, 65536> bytes;
  std::size_t count = 0;
  ssize_t got = 0;
  while ((got = ::recv(m_socket.get(), bytes.data(), bytes.size(), 0)) > 0) {
    count += static_cast<std::size_t>(got);
  }
  return count;
}

}  // namespace load
