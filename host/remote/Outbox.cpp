#include "remote/Outbox.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace host {
namespace {

// What sendmsg takes is not const, though it does not write there.
iovec part(const char* data, std::size_t size) {
  return {const_cast<char*>(data), size};
}

bool isTemporary(int error) {
  return error == EAGAIN;
}

}  // namespace

Outbox::Outbox(int socket, std::function<void()> attention)
    : m_socket(socket), m_attention(std::move(attention)) {}

bool Outbox::send(const Frame& frame) {
  const auto header = frameHeader(frame.kind, frame.id, frame.payload.size());
  const std::lock_guard lock(m_mutex);
  if (m_state != State::open || frame.payload.size() > kMaxPayload) return false;
  const bool wasIdle = m_queued.empty();
  std::size_t sent = 0;
  if (wasIdle) sent = transmit(header.data(), header.size(), frame.payload);
  if (m_state != State::open) return false;
  if (sent == header.size() + frame.payload.size()) return true;
  const std::size_t sentOfHeader = std::min(sent, header.size());
  m_queued.append(header.data() + sentOfHeader, header.size() - sentOfHeader);
  m_queued.append(frame.payload.substr(sent - sentOfHeader));
  if (m_queued.size() > kMaxQueued) {
    end(State::overflown);
    return false;
  }
  if (wasIdle) m_attention();
  return true;
}

std::size_t Outbox::transmit(const char* header, std::size_t headerSize, std::string_view payload) {
  iovec parts[] = {part(header, headerSize), part(payload.data(), payload.size())};
  msghdr message{};
  message.msg_iov = headerSize != 0 ? parts : parts + 1;
  message.msg_iovlen = headerSize != 0 ? 2 : 1;
  for (;;) {
    const ssize_t sent = ::sendmsg(m_socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0) return static_cast<std::size_t>(sent);
    if (errno == EINTR) continue;
    if (!isTemporary(errno)) end(State::broken);
    return 0;
  }
}

void Outbox::end(State state) {
  m_state = state;
  std::string().swap(m_queued);
  m_attention();
}

void Outbox::ring() {
  const std::lock_guard lock(m_mutex);
  if (m_state != State::closed) m_attention();
}

bool Outbox::flush() {
  const std::lock_guard lock(m_mutex);
  if (m_state != State::open || m_queued.empty()) return true;
  const std::size_t sent = transmit(nullptr, 0, m_queued);
  m_queued.erase(0, sent);
  return m_queued.empty();
}

void Outbox::close() {
  const std::lock_guard lock(m_mutex);
  m_state = State::closed;
  std::string().swap(m_queued);
  m_attention = nullptr;
}

Outbox::State Outbox::state() const {
  const std::lock_guard lock(m_mutex);
  return m_state;
}

bool Outbox::idle() const {
  const std::lock_guard lock(m_mutex);
  return m_queued.empty();
}

}  // namespace host
