#include "remote/Connection.h"

#include <poll.h>

#include <asio/post.hpp>
#include <cerrno>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "Logging.h"
#include "remote/ClientLimits.h"
#include "remote/PeerProcess.h"

namespace host {
namespace {

constexpr std::uint64_t kNotAwaited = UINT64_MAX;  // the host did not read from it meanwhile

// For the log; 0 when the system does not know.
long processIdAt(int socket) {
  const auto process = processAt(socket);
  return process ? process->pid : 0;
}

std::string reasonOf(int error) {
  return std::error_code(error, std::generic_category()).message();
}

}  // namespace

Connection::Connection(Socket socket, Endpoint endpoint, std::uint64_t number, Listener& listener,
                       std::chrono::milliseconds timeout)
    : m_socket(std::move(socket)),
      m_timer(m_socket.get_executor()),
      m_endpoint(endpoint),
      m_number(number),
      m_listener(listener),
      m_timeout(timeout) {}

void Connection::makePeer() {
  const std::shared_ptr<Wakeup> wakeup(new Wakeup{m_socket.get_executor(), weak_from_this()});
  m_peer = std::make_shared<Peer>("client-" + std::to_string(m_number), m_socket.native_handle(),
                                  [wakeup] { wakeLoop(wakeup); });
}

void Connection::wakeLoop(const std::shared_ptr<Wakeup>& wakeup) {
  if (wakeup->pending.exchange(true)) return;
  const std::shared_ptr<WaitMemory> memory(wakeup, &wakeup->memory);
  asio::post(wakeup->loop, WaitHandler{memory, [wakeup] {
                                         wakeup->pending = false;
                                         const auto self = wakeup->connection.lock();
                                         if (self) self->guarded([&] { self->checkOutbox(); });
                                       }});
}

void Connection::read() {
  m_reading = true;
  const auto space = m_reader.space();
  m_socket.async_read_some(asio::buffer(space.data(), space.size()),
                           [self = shared_from_this()](const auto& error, std::size_t bytes) {
                             self->guarded([&] { self->onRead(static_cast<bool>(error), bytes); });
                           });
}

void Connection::onRead(bool failed, std::size_t bytes) {
  m_reading = false;
  if (m_closed) return;
  if (failed) return onEndOfStream();
  m_reader.commit(bytes);
  handle(m_listener.framesAtOnce(*this));
}

void Connection::takeTurn() {
  if (!m_closed) handle(kFramesInTurn);
}

void Connection::handle(std::size_t frames) {
  guarded([this, frames] {
    m_peer->outbox().hold();
    const Turn turn = handleFrames(frames);
    if (!m_peer->outbox().flush()) waitForRoom();
    switch (turn) {
      case Turn::complete:
        if (m_reader.midFrame()) startTimeout();
        return read();
      case Turn::over:
        if (frames > 0) m_framesAtTimeoutStart = kNotAwaited;
        return m_listener.onTurnOver(*this);
      case Turn::paused:
        return pause();
      case Turn::dropped:
        return;
    }
  });
}

Connection::Turn Connection::handleFrames(std::size_t most) {
  const auto end = std::chrono::steady_clock::now() + kTurn;
  Frame frame;
  for (std::size_t handled = 0; m_reader.midFrame(); ++handled) {
    if (!m_peer->mayHandleNext()) return Turn::paused;
    if (handled == most) return Turn::over;
    if (handled > 0 && std::chrono::steady_clock::now() >= end) return Turn::over;
    switch (m_reader.next(frame)) {
      case FrameReader::Outcome::needMore:
        return Turn::complete;
      case FrameReader::Outcome::broken:
        drop(m_reader.fault().c_str());
        return Turn::dropped;
      case FrameReader::Outcome::frame:
        if (const auto fault = m_listener.onFrame(*this, frame)) {
          drop(fault->c_str());
          return Turn::dropped;
        }
        ++m_frames;
    }
  }
  return Turn::complete;
}

// The host does not read from a paused client; what it sends waits in its socket.
void Connection::pause() {
  m_paused = true;
  m_peer->setPaused(true);
  watchForDisconnect();
  if (m_peer->mayHandleNext()) resume();  // an answer came before setPaused
}

void Connection::resume() {
  m_paused = false;
  m_framesAtTimeoutStart = kNotAwaited;
  m_peer->setPaused(false);
  m_listener.onTurnOver(*this);
}

// The end of the stream lies behind unread bytes, but a closed socket is reported at once.
void Connection::watchForDisconnect() {
  if (m_peer->outbox().state() != Outbox::State::open) return;
  if (std::exchange(m_waitingForDisconnect, true)) return;
  m_socket.async_wait(Socket::wait_error, [self = shared_from_this()](const auto& error) {
    self->m_waitingForDisconnect = false;
    if (!error && !self->m_closed) self->m_peer->outbox().fail(EPIPE);
  });
}

void Connection::onEndOfStream() {
  if (m_reader.midFrame()) return drop("disconnected in the middle of a frame");
  m_ending = true;
  m_peer->disconnect();
  m_listener.onDisconnect(*this);
  if (!clientStillReads()) return close();
  startTimeout();
  closeIfAnswered();
}

// A client that only ended its sending side still reads; one that closed its socket does not.
bool Connection::clientStillReads() {
  pollfd polled{m_socket.native_handle(), 0, 0};
  return ::poll(&polled, 1, 0) == 0;
}

void Connection::closeIfAnswered() {
  if (m_peer->outbox().idle() && !m_peer->hasOpenChannels()) close();
}

// Any exception drops only this client.
template <class Step>
void Connection::guarded(Step step) try {
  step();
} catch (const std::bad_alloc&) {
  drop("out of memory");
} catch (const std::exception& error) {
  drop(error.what());
}

void Connection::drop(const char* why) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "client %llu (process %ld) dropped: %s",
            static_cast<unsigned long long>(m_number), processIdAt(m_socket.native_handle()), why);
  close();
}

void Connection::close() {
  if (std::exchange(m_closed, true)) return;
  const auto self = shared_from_this();
  m_peer->outbox().close();
  if (!m_ending) {
    m_peer->disconnect();
    m_listener.onDisconnect(*this);
  }
  m_timer.cancel();
  asio::error_code ignored;
  m_socket.close(ignored);
  m_listener.onClosed(*this);
}

void Connection::end() {
  guarded([this] { checkOutbox(); });
  close();
}

void Connection::checkOutbox() {
  if (m_closed) return;
  if (m_paused && m_peer->mayHandleNext()) resume();
  switch (m_peer->outbox().state()) {
    case Outbox::State::open:
      break;
    case Outbox::State::overflowed:
      return drop("does not read its messages");
    case Outbox::State::failed:
      return drop(("sending failed: " + reasonOf(m_peer->outbox().error())).c_str());
    default:
      // The client is unreachable. Calls that it sent before are still executed; control requests
      // are not, and its place becomes free.
      if (m_ending || m_endpoint == Endpoint::control) close();
      return;
  }
  if (!m_peer->outbox().idle()) return waitForRoom();
  if (m_ending) closeIfAnswered();
}

void Connection::waitForRoom() {
  if (std::exchange(m_waitingForRoom, true)) return;
  m_socket.async_wait(Socket::wait_write, [self = shared_from_this()](const auto&) {
    self->m_waitingForRoom = false;
    if (self->m_closed) return;
    static_cast<void>(self->m_peer->outbox().flush());
    self->guarded([&] { self->checkOutbox(); });
  });
}

// Armed once for a series of unfinished frames; the expiry checks what was received meanwhile.
void Connection::startTimeout() {
  if (std::exchange(m_timeoutStarted, true)) return;
  m_framesAtTimeoutStart = m_frames;
  m_timer.expires_after(m_timeout);
  m_timer.async_wait([weak = weak_from_this()](const auto& error) {
    if (error) return;
    if (const auto self = weak.lock()) self->guarded([&] { self->onTimeout(); });
  });
}

void Connection::onTimeout() {
  m_timeoutStarted = false;
  if (m_closed) return;
  if (m_ending) return close();  // its last answers are not ready, or it does not read them
  if (!m_reader.midFrame()) return;
  if (m_reading && m_frames == m_framesAtTimeoutStart) return drop("did not finish a frame");
  startTimeout();
}

}  // namespace host
