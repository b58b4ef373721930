#include "remote/Outbox.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kUsualFrame = 1024;  // bytes; enough for almost all frames

bool isDisconnect(int error) {
  return error == EPIPE || error == ECONNRESET;
}

}  // namespace

Outbox::Outbox(int socket, std::function<void()> wake)
    : m_socket(socket), m_wake(std::move(wake)) {}

bool Outbox::send(const Frame& frame) {
  if (frame.payload.size() > kMaxPayload) return false;
  const std::size_t size = kFrameHeaderSize + frame.payload.size();
  if (size > kUsualFrame) return sendBytes(encodeFrame(frame));
  // One buffer on the stack is cheaper than two writes or a heap allocation.
  std::array<char, kUsualFrame> bytes;
  const auto header = frameHeader(frame.kind, frame.id, frame.payload.size());
  std::copy(header.begin(), header.end(), bytes.begin());
  std::copy(frame.payload.begin(), frame.payload.end(), bytes.begin() + kFrameHeaderSize);
  return sendBytes({bytes.data(), size});
}

bool Outbox::sendBytes(std::string_view frame) {
  const MutexLock lock(m_mutex);
  if (m_state != State::open) return false;
  const bool wasIdle = m_queued.empty();
  if (wasIdle) frame.remove_prefix(transmit(frame));
  if (m_state != State::open) return false;
  if (frame.empty()) return true;
  if (!queue(frame)) return false;
  if (wasIdle) m_wake();
  return true;
}

bool Outbox::queue(std::string_view frame) try {
  m_queued.append(frame);
  if (m_queued.size() <= kMaxQueued) return true;
  end(State::overflowed);
  return false;
} catch (const std::bad_alloc&) {
  end(ENOMEM);
  return false;
}

std::size_t Outbox::transmit(std::string_view bytes) {
  for (;;) {
    const ssize_t sent = ::send(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0) return static_cast<std::size_t>(sent);
    if (errno == EINTR) continue;
    if (errno != EAGAIN) end(errno);
    return 0;
  }
}

void Outbox::fail(int error) {
  const MutexLock lock(m_mutex);
  if (m_state == State::open) end(error);
}

void Outbox::end(int error) {
  m_error = error;
  end(isDisconnect(error) ? State::broken : State::failed);
}

void Outbox::end(State state) {
  m_state = state;
  std::string().swap(m_queued);
  m_wake();
}

void Outbox::wakeLoop() {
  const MutexLock lock(m_mutex);
  if (m_state != State::closed) m_wake();
}

bool Outbox::flush() {
  const MutexLock lock(m_mutex);
  if (m_state != State::open || m_queued.empty()) return true;
  const std::size_t sent = transmit(m_queued);
  m_queued.erase(0, sent);
  return m_queued.empty();
}

void Outbox::close() {
  const MutexLock lock(m_mutex);
  m_state = State::closed;
  std::string().swap(m_queued);
  m_wake = nullptr;
}

Outbox::State Outbox::state() const {
  const MutexLock lock(m_mutex);
  return m_state;
}

int Outbox::error() const {
  const MutexLock lock(m_mutex);
  return m_error;
}

bool Outbox::idle() const {
  const MutexLock lock(m_mutex);
  return m_queued.empty();
}

std::size_t Outbox::queued() const {
  const MutexLock lock(m_mutex);
  return m_queued.size();
}

}  // namespace host
