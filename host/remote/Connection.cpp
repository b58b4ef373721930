#include "remote/Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "Logging.h"
#include "base/LogLevels.h"
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

Connection::Connection(IoLoop& loop, Descriptor socket, Endpoint endpoint, std::uint64_t number,
                       Listener& listener, std::chrono::milliseconds timeout)
    : m_loop(loop),
      m_socket(std::move(socket)),
      m_timer(loop,
              [this] {
                const auto self = shared_from_this();
                guarded([this] { onTimeout(); });
              }),
      m_endpoint(endpoint),
      m_number(number),
      m_listener(listener),
      m_timeout(timeout) {
  m_watch.emplace(loop, m_socket.get(), EPOLLIN, [this](std::uint32_t events) {
    const auto self = shared_from_this();
    guarded([this, events] { onReady(events); });
  });
}

// Any thread can make the loop call checkOutbox(). This needs no memory, since a client whose
// request is lost would wait forever.
void Connection::makePeer(std::shared_ptr<FrameTap> tap) {
  auto check = std::make_shared<IoLoop::Task>([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->guarded([&] { self->checkOutbox(); });
  });
  m_peer = std::make_shared<Peer>(
      "client-" + std::to_string(m_number), m_socket.get(),
      [&loop = m_loop, check] { loop.post(check); }, std::move(tap));
}

void Connection::await() {
  if (m_closed) return;
  m_watch->await((m_reading ? EPOLLIN : 0U) | (m_waitingForRoom ? EPOLLOUT : 0U) |
                 (m_waitingForDisconnect ? EPOLLHUP : 0U));
}

// An earlier event of this pass may have changed what is awaited. Nothing reaches a client that has
// hung up, so its control requests are not carried out.
void Connection::onReady(std::uint32_t events) {
  const bool hungUp = (events & (EPOLLHUP | EPOLLERR)) != 0;
  if (hungUp) {
    m_waitingForDisconnect = false;
    m_peer->outbox().fail(EPIPE);
  }
  if ((hungUp || (events & EPOLLOUT) != 0) && std::exchange(m_waitingForRoom, false)) onRoom();
  if (m_closed) return;  // the outbox has ended
  if ((hungUp || (events & EPOLLIN) != 0) && std::exchange(m_reading, false)) receive();
  await();
}

void Connection::read() {
  m_reading = true;
  await();
}

void Connection::receive() {
  const auto space = m_reader.space();
  const ssize_t size = ::recv(m_socket.get(), space.data(), space.size(), MSG_DONTWAIT);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return read();
  if (size <= 0) return onEndOfStream();
  m_reader.commit(static_cast<std::size_t>(size));
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
  await();
}

void Connection::onEndOfStream() {
  if (m_reader.midFrame()) return drop("disconnected in the middle of a frame");
  checkOutbox();  // a failure just before the disconnect is logged
  if (m_closed) return;
  m_ending = true;
  m_peer->disconnect();
  m_listener.onDisconnect(*this);
  if (!clientStillReads()) return close();
  startTimeout();
  closeIfAnswered();
}

// A client that only ended its sending side still reads; one that closed its socket does not.
bool Connection::clientStillReads() {
  pollfd polled{m_socket.get(), 0, 0};
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
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "client %llu (process %ld) dropped: %s",
            static_cast<unsigned long long>(m_number), processIdAt(m_socket.get()), why);
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
  m_watch.reset();
  m_socket.reset();
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
  await();
}

void Connection::onRoom() {
  static_cast<void>(m_peer->outbox().flush());
  checkOutbox();
}

// Armed once for a series of unfinished frames; the expiry checks what was received meanwhile.
void Connection::startTimeout() {
  if (std::exchange(m_timeoutStarted, true)) return;
  m_framesAtTimeoutStart = m_frames;
  m_timer.start(m_timeout);
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
