#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Descriptor.h"
#include "base/IoLoop.h"
#include "remote/Frame.h"
#include "remote/Peer.h"

namespace host {

// One client's socket on the loop: reads frames, flushes the peer's outbox, detects the disconnect.
// Owner: the server, until onClosed(). Thread: the loop's. Failure: a protocol error or a timeout
// of the client ends this connection with one log line.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // Handles what the client sends. Outlives every connection that is not closed.
  class Listener {
   public:
    // Handles one frame. Returns a text to drop the client: what it did wrong.
    virtual std::optional<std::string> onFrame(Connection& from, const Frame& frame) = 0;

    // How many frames to handle at once; the client must wait for a turn to have more handled.
    [[nodiscard]] virtual std::size_t framesAtOnce(const Connection& from) const = 0;

    // The client sent more frames than framesAtOnce(): call takeTurn() after the turns of the
    // clients that wait already.
    virtual void onTurnOver(Connection& from) = 0;

    // The client has disconnected or sends no more: undo its registrations. Called once.
    virtual void onDisconnect(Connection& from) = 0;

    // The last call from this connection. Called once.
    virtual void onClosed(Connection& from) = 0;

   protected:
    ~Listener() = default;
  };

  // The socket at which the client connected, which decides what it may send.
  enum class Endpoint { calls, control };

  Connection(IoLoop& loop, Descriptor socket, Endpoint endpoint, std::uint64_t number,
             Listener& listener, std::chrono::milliseconds timeout);

  // Once, before all else. tap: see Peer.
  void makePeer(std::shared_ptr<FrameTap> tap = nullptr);

  // Starts to read. The connection calls it again after each turn.
  void read();

  // Handles received frames for one turn. REQUIRES: called once for each onTurnOver().
  void takeTurn();

  // Disconnects, without a log line.
  void close();

  // Disconnects when the host ends. A failure that the loop has not handled yet is logged.
  void end();

  [[nodiscard]] Peer& peer() { return *m_peer; }
  [[nodiscard]] const std::shared_ptr<Peer>& sharedPeer() const { return m_peer; }
  [[nodiscard]] Endpoint endpoint() const { return m_endpoint; }
  [[nodiscard]] std::uint64_t number() const { return m_number; }
  [[nodiscard]] bool hasSentFrames() const { return m_frames > 0; }  // before this one

 private:
  void await();
  void onReady(std::uint32_t events);
  void receive();
  enum class Turn { complete, over, paused, dropped };
  void handle(std::size_t frames);
  [[nodiscard]] Turn handleFrames(std::size_t most);
  void pause();
  void resume();
  void watchForDisconnect();
  void onEndOfStream();
  void drop(const char* why);
  template <class Step>
  void guarded(Step step);
  void checkOutbox();
  void onRoom();
  void waitForRoom();
  void closeIfAnswered();
  [[nodiscard]] bool clientStillReads();
  void startTimeout();
  void onTimeout();

  IoLoop& m_loop;
  Descriptor m_socket;
  std::optional<IoLoop::Watch> m_watch;  // until close()
  IoLoop::Timer m_timer;
  const Endpoint m_endpoint;
  const std::uint64_t m_number;
  Listener& m_listener;
  const std::chrono::milliseconds m_timeout;
  std::shared_ptr<Peer> m_peer;
  FrameReader m_reader;
  std::uint64_t m_frames = 0;
  std::uint64_t m_framesAtTimeoutStart = 0;
  bool m_timeoutStarted = false;
  bool m_waitingForRoom = false;
  bool m_waitingForDisconnect = false;
  bool m_reading = false;  // waiting for the client to send
  bool m_paused = false;   // not read until its requests are answered
  bool m_ending = false;   // the client ended its sending side
  bool m_closed = false;
};

}  // namespace host
