#include "remote/Connection.h"

#include <poll.h>

#include <asio/post.hpp>
#include <cerrno>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "Logging.h"
#include "remote/ClientBounds.h"
#include "remote/PeerProcess.h"

namespace host {
namespace {

constexpr std::uint64_t kNotWatched = UINT64_MAX;  // the client was not waited for throughout

// For the log; 0 when the system does not know.
long processIdAt(int socket) {
  const auto process = processAt(socket);
  return process ? process->pid : 0;
}

std::string reasonOf(int error) {
  return std::error_code(error, std::generic_category()).message();
}

}  // namespace

Connection::Connection(Socket socket, Entrance entrance, std::uint64_t number, Listener& listener,
                       std::chrono::milliseconds limit)
    : m_socket(std::move(socket)),
      m_timer(m_socket.get_executor()),
      m_entrance(entrance),
      m_number(number),
      m_listener(listener),
      m_limit(limit) {}

void Connection::makePeer() {
  const std::shared_ptr<Attention> attention(
      new Attention{m_socket.get_executor(), weak_from_this()});
  m_peer = std::make_shared<Peer>("client-" + std::to_string(m_number), m_socket.native_handle(),
                                  [attention] { ask(attention); });
}

void Connection::ask(const std::shared_ptr<Attention>& attention) {
  if (attention->pending.exchange(true)) return;
  const std::shared_ptr<WaitMemory> memory(attention, &attention->memory);
  asio::post(attention->loop, WaitHandler{memory, [attention] {
                                            attention->pending = false;
                                            const auto self = attention->connection.lock();
                                            if (self) self->guarded([&] { self->attend(); });
                                          }});
}

void Connection::open() {
  read();
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
  if (failed) return onEnd();
  m_reader.commit(bytes);
  // A client that needed more than a turn queues behind those that wait for theirs.
  if (std::exchange(m_cutShort, false)) return m_listener.turnOver(*this);
  handle(kFramesAtOnce);
}

void Connection::takeTurn() {
  if (!m_closed) handle(kFramesInTurn);
}

void Connection::handle(std::size_t frames) {
  guarded([this, frames] {
    switch (handleFrames(frames)) {
      case Turn::complete:
        if (m_reader.midFrame()) watch();
        return read();
      case Turn::over:
        m_cutShort = true;
        m_framesBeforeWatch = kNotWatched;
        return m_listener.turnOver(*this);
      case Turn::held:
        return hold();
      case Turn::dropped:
        return;
    }
  });
}

Connection::Turn Connection::handleFrames(std::size_t most) {
  const auto end = std::chrono::steady_clock::now() + kTurn;
  Frame frame;
  for (std::size_t handled = 0; m_reader.midFrame(); ++handled) {
    if (!m_peer->mayGoOn()) return Turn::held;
    if (handled == most) return Turn::over;
    if (handled > 0 && std::chrono::steady_clock::now() >= end) return Turn::over;
    switch (m_reader.next(frame)) {
      case FrameReader::Outcome::needMore:
        return Turn::complete;
      case FrameReader::Outcome::broken:
        drop(m_reader.fault().c_str());
        return Turn::dropped;
      case FrameReader::Outcome::frame:
        if (const auto fault = m_listener.frame(*this, frame)) {
          drop(fault->c_str());
          return Turn::dropped;
        }
        ++m_frames;
    }
  }
  return Turn::complete;
}

// The host does not read from a held client; what it sends waits in its socket.
void Connection::hold() {
  m_held = true;
  m_peer->setHeld(true);
  watchForHangUp();
  if (m_peer->mayGoOn()) goOn();  // an answer came before setHeld
}

void Connection::goOn() {
  m_held = false;
  m_framesBeforeWatch = kNotWatched;
  m_peer->setHeld(false);
  m_listener.turnOver(*this);
}

// The end of the stream lies behind unread bytes, but a closed socket is reported at once.
void Connection::watchForHangUp() {
  if (m_peer->outbox().state() != Outbox::State::open) return;
  if (std::exchange(m_waitingForHangUp, true)) return;
  m_socket.async_wait(Socket::wait_error, [self = shared_from_this()](const auto& error) {
    self->m_waitingForHangUp = false;
    if (!error && !self->m_closed) self->m_peer->outbox().giveUp(EPIPE);
  });
}

void Connection::onEnd() {
  if (m_reader.midFrame()) return drop("hung up in the middle of a frame");
  m_ending = true;
  m_peer->hangUp();
  m_listener.hungUp(*this);
  if (!otherSideIsOpen()) return close();
  watch();
  finishWhenAnswered();
}

// A client that only ended its sending side still reads; one that closed its socket does not.
bool Connection::otherSideIsOpen() {
  pollfd asked{m_socket.native_handle(), 0, 0};
  return ::poll(&asked, 1, 0) == 0;
}

void Connection::finishWhenAnswered() {
  if (m_peer->outbox().idle() && !m_peer->hasOpenLines()) close();
}

// Any exception drops only this client.
template <class Step>
void Connection::guarded(Step step) try {
  step();
} catch (const std::bad_alloc&) {
  drop("no memory is left to serve it");
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
    m_peer->hangUp();
    m_listener.hungUp(*this);
  }
  m_timer.cancel();
  asio::error_code ignored;
  m_socket.close(ignored);
  m_listener.closed(*this);
}

void Connection::end() {
  guarded([this] { attend(); });
  close();
}

void Connection::attend() {
  if (m_closed) return;
  if (m_held && m_peer->mayGoOn()) goOn();
  switch (m_peer->outbox().state()) {
    case Outbox::State::open:
      break;
    case Outbox::State::overflown:
      return drop("does not read what is sent to it");
    case Outbox::State::failed:
      return drop(("cannot be sent to: " + reasonOf(m_peer->outbox().error())).c_str());
    default:
      // The client is unreachable. Calls that it sent before are still executed; control requests
      // are not, and its place becomes free.
      if (m_ending || m_entrance == Entrance::control) close();
      return;
  }
  if (!m_peer->outbox().idle()) return waitForRoom();
  if (m_ending) finishWhenAnswered();
}

void Connection::waitForRoom() {
  if (std::exchange(m_waitingForRoom, true)) return;
  m_socket.async_wait(Socket::wait_write, [self = shared_from_this()](const auto&) {
    self->m_waitingForRoom = false;
    if (self->m_closed) return;
    static_cast<void>(self->m_peer->outbox().flush());
    self->guarded([&] { self->attend(); });
  });
}

// Armed once for a series of unfinished frames; the expiry checks what was received meanwhile.
void Connection::watch() {
  if (std::exchange(m_watching, true)) return;
  m_framesBeforeWatch = m_frames;
  m_timer.expires_after(m_limit);
  m_timer.async_wait([weak = weak_from_this()](const auto& error) {
    if (error) return;
    if (const auto self = weak.lock()) self->guarded([&] { self->onTime(); });
  });
}

void Connection::onTime() {
  m_watching = false;
  if (m_closed) return;
  if (m_ending) return close();  // its last answers are not ready, or it does not read them
  if (!m_reader.midFrame()) return;
  if (m_reading && m_frames == m_framesBeforeWatch) return drop("did not finish a frame");
  watch();
}

}  // namespace host
