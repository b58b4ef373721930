#include "load/Subscriber.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <stdexcept>

#include "load/Latencies.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

// [name, type, parameters] in the default codec.
constexpr std::string_view kObserve("\x93\xb1observeTimeEvents\0\x90", 21);

}  // namespace

Subscriber::Subscriber(const std::filesystem::path& socket, int registrations)
    : m_socket(socket), m_registrations(registrations) {
  host::Frame reply;
  for (int i = 0; i < registrations; ++i) {
    m_socket.send({host::FrameKind::call, 1, kObserve});
    if (!m_socket.receive(reply, Clock::now() + kAnswerLimit)) {
      throw std::runtime_error("a subscriber is not registered");
    }
  }
}

void Subscriber::expect(const std::vector<std::string>& events) {
  const auto deadline = Clock::now() + kAnswerLimit;
  host::Frame frame;
  for (const std::string& event : events) {
    for (int i = 0; i < m_registrations; ++i) {
      if (!m_socket.receive(frame, deadline)) throw std::runtime_error("an event did not come");
      if (frame.payload != event) throw std::runtime_error("another event came than the next one");
    }
  }
}

void Subscriber::expectNoMore() {
  host::Frame frame;
  if (m_socket.receive(frame, Clock::now()))
    throw std::runtime_error("an event came that is not due");
}

bool Subscriber::isDisconnected() const {
  pollfd polled{m_socket.descriptor(), 0, 0};
  return ::poll(&polled, 1, 0) == 1;
}

std::size_t Subscriber::drain() const {
  std::array<char, 65536> bytes;
  std::size_t count = 0;
  ssize_t got = 0;
  while ((got = ::recv(m_socket.descriptor(), bytes.data(), bytes.size(), 0)) > 0) {
    count += static_cast<std::size_t>(got);
  }
  return count;
}

}  // namespace load
