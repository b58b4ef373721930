#include "remote/Outbox.h"

#include <sys/socket.h>

#include <cerrno>
#include <new>
#include <utility>

namespace host {
namespace {

// In bytes. Reserved in advance, so that a usual frame, such as a refusal for lack of memory, needs
// none while nothing is queued.
constexpr std::size_t kReserved = 512;
// A larger buffer is freed once its bytes are sent.
constexpr std::size_t kKept = 2 * Outbox::kMostHeld;

bool isDisconnect(int error) {
  return error == EPIPE || error == ECONNRESET;
}

}  // namespace

Outbox::Outbox(int socket, std::function<void()> wake) : m_socket(socket), m_wake(std::move(wake)) {
  m_queued.reserve(kReserved);
}

bool Outbox::send(const Frame& frame) try {
  if (frame.payload.size() > kMaxPayload) return false;
  const auto header = frameHeader(frame.kind, frame.id, frame.payload.size());
  const MutexLock lock(m_mutex);
  if (m_state != State::open || !makeRoom(header.size() + frame.payload.size())) return false;
  m_queued.append(header.data(), header.size()).append(frame.payload);
  const bool waits = m_full || (m_held && m_queued.size() <= kMostHeld);
  if (!waits) {
    transmit();
    if (m_full) m_wake();
  }
  if (m_queued.size() > kMaxQueued) end(State::overflowed);
  return m_state == State::open;
} catch (const std::bad_alloc&) {
  fail(ENOMEM);
  return false;
}

// Afterwards a frame of that size can be appended whole. Without memory, the answers that are held
// go out first: a client must not lose the answer to a request that was carried out.
bool Outbox::makeRoom(std::size_t size) {
  try {
    m_queued.reserve(m_queued.size() + size);
  } catch (const std::bad_alloc&) {
    if (m_held && !m_full && !m_queued.empty()) transmit();
    m_queued.reserve(m_queued.size() + size);
  }
  return m_state == State::open;
}

void Outbox::transmit() {
  ssize_t sent = 0;
  do {
    sent = ::send(m_socket, m_queued.data(), m_queued.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  if (sent < 0 && errno != EAGAIN) return end(errno);
  if (sent > 0) m_queued.erase(0, static_cast<std::size_t>(sent));
  m_full = !m_queued.empty();
  if (!m_full && m_queued.capacity() > kKept) shrink();
}

void Outbox::shrink() try {
  std::string reserved;
  reserved.reserve(kReserved);
  m_queued.swap(reserved);
} catch (const std::bad_alloc&) {
  // Keeps the large buffer until memory is available.
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

void Outbox::hold() {
  const MutexLock lock(m_mutex);
  m_held = true;
}

bool Outbox::flush() {
  const MutexLock lock(m_mutex);
  m_held = false;
  if (m_state == State::open && !m_queued.empty()) transmit();
  return m_queued.empty();
}

void Outbox::close() {
  const MutexLock lock(m_mutex);
  if (m_state == State::open && m_held && !m_queued.empty()) transmit();
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
