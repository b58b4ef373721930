#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "base/Mutex.h"
#include "remote/Frame.h"

namespace host {

// The sending side of one client's socket: writes to the socket while it accepts everything, then
// queues. Frames keep the order of the send() calls. Never blocks, never logs.
// Owner: the client's Peer. Thread: send, fail and wakeLoop any; hold, flush and close the loop's.
// Failure: ends when the client disconnects (broken), leaves more than kMaxQueued bytes unread
// (overflowed), or sending fails or memory is short (failed); state() says which, and every later
// send is refused.
class Outbox {
 public:
  static constexpr std::size_t kMaxQueued = 1024 * 1024;

  // At most this many bytes wait after hold(): enough for the usual answers of a turn.
  static constexpr std::size_t kMostHeld = 8192;

  enum class State { open, overflowed, broken, failed, closed };

  // `wake` makes the loop check the outbox. Called on any thread, with the lock held, so it may
  // only post; never after close(). REQUIRES: the socket stays open until close().
  Outbox(int socket, std::function<void()> wake);

  // False when the frame will not reach the client.
  bool send(const Frame& frame);

  // Fails with this errno, unless it has ended already: a frame could not be encoded, so that none
  // may follow it, or the client has disconnected (EPIPE).
  void fail(int error);

  // Calls `wake`.
  void wakeLoop();

  // From now on frames wait for flush() or close(), so that many need only one system call.
  void hold();

  // Sends queued bytes while the socket accepts them. False when some are left.
  bool flush();

  // Sends held frames. The socket is not used from here on.
  void close();

  [[nodiscard]] State state() const;
  [[nodiscard]] int error() const;           // errno, once failed
  [[nodiscard]] bool idle() const;           // nothing is queued
  [[nodiscard]] std::size_t queued() const;  // bytes

 private:
  [[nodiscard]] bool makeRoom(std::size_t size) CLOCK_REQUIRES(m_mutex);
  void transmit() CLOCK_REQUIRES(m_mutex);
  void shrink() CLOCK_REQUIRES(m_mutex);
  void end(int error) CLOCK_REQUIRES(m_mutex);
  void end(State state) CLOCK_REQUIRES(m_mutex);

  mutable Mutex m_mutex;
  const int m_socket;
  std::function<void()> m_wake CLOCK_GUARDED_BY(m_mutex);
  State m_state CLOCK_GUARDED_BY(m_mutex) = State::open;
  int m_error CLOCK_GUARDED_BY(m_mutex) = 0;
  std::string m_queued CLOCK_GUARDED_BY(m_mutex);
  bool m_held CLOCK_GUARDED_BY(m_mutex) = false;
  bool m_full CLOCK_GUARDED_BY(m_mutex) = false;  // the loop waits until the socket has room
};

}  // namespace host
