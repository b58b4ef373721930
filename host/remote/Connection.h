#pragma once

#include <asio/basic_stream_socket.hpp>
#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/WaitMemory.h"
#include "remote/Frame.h"
#include "remote/Peer.h"

namespace host {

// One client's socket on the loop: reads frames, flushes the peer's outbox, detects the disconnect.
// Owner: the server, until closed(). Thread: the loop's. Failure: a protocol error or a timeout of
// the client ends this connection with one log line.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // The loop's executor by its own type: the type-erased one costs on every read.
  using Executor = asio::io_context::executor_type;
  using Socket = asio::basic_stream_socket<asio::local::stream_protocol, Executor>;

  // Handles what the client sends. Outlives every connection that is not closed.
  class Listener {
   public:
    // Handles one frame. Returns a text to drop the client: what it did wrong.
    virtual std::optional<std::string> frame(Connection& from, const Frame& frame) = 0;

    // The client sent more frames than fit in a turn: call takeTurn() after the others' turns.
    virtual void turnOver(Connection& from) = 0;

    // The client sends no more: undo its registrations. Called once.
    virtual void hungUp(Connection& from) = 0;

    // The last call from this connection. Called once.
    virtual void closed(Connection& from) = 0;

   protected:
    ~Listener() = default;
  };

  // The socket at which the client connected, which decides what it may send.
  enum class Entrance { calls, control };

  Connection(Socket socket, Entrance entrance, std::uint64_t number, Listener& listener,
             std::chrono::milliseconds limit);

  // Once, before all else.
  void makePeer();

  // Starts to read.
  void open();

  // Handles received frames for one turn. REQUIRES: called once for each turnOver().
  void takeTurn();

  // Disconnects, without a log line.
  void close();

  // Disconnects when the host ends. A failure that the loop has not handled yet is logged.
  void end();

  [[nodiscard]] Peer& peer() { return *m_peer; }
  [[nodiscard]] const std::shared_ptr<Peer>& sharedPeer() const { return m_peer; }
  [[nodiscard]] Entrance entrance() const { return m_entrance; }
  [[nodiscard]] std::uint64_t number() const { return m_number; }
  [[nodiscard]] bool heard() const { return m_frames > 0; }  // an earlier frame was received

 private:
  // Lets any thread make the loop call attend(). Requests are coalesced; a request has memory of
  // its own, since a client whose request is lost would wait for ever.
  struct Attention {
    Executor loop;
    std::weak_ptr<Connection> connection;
    std::atomic<bool> pending{false};
    WaitMemory memory{};
  };

  static void ask(const std::shared_ptr<Attention>& attention);
  void read();
  void onRead(bool failed, std::size_t bytes);
  enum class Turn { complete, over, held, dropped };
  void handle(std::size_t frames);
  [[nodiscard]] Turn handleFrames(std::size_t most);
  void hold();
  void goOn();
  void watchForHangUp();
  void onEnd();
  void drop(const char* why);
  template <class Step>
  void guarded(Step step);
  void attend();
  void waitForRoom();
  void finishWhenAnswered();
  [[nodiscard]] bool otherSideIsOpen();
  void watch();
  void onTime();

  Socket m_socket;
  asio::basic_waitable_timer<std::chrono::steady_clock,
                             asio::wait_traits<std::chrono::steady_clock>, Executor>
      m_timer;
  const Entrance m_entrance;
  const std::uint64_t m_number;
  Listener& m_listener;
  const std::chrono::milliseconds m_limit;
  std::shared_ptr<Peer> m_peer;
  FrameReader m_reader;
  std::uint64_t m_frames = 0;
  std::uint64_t m_framesBeforeWatch = 0;
  bool m_watching = false;
  bool m_waitingForRoom = false;
  bool m_waitingForHangUp = false;
  bool m_reading = false;   // waiting for the client to send
  bool m_cutShort = false;  // a turn ended with frames left
  bool m_held = false;      // not read until it got answers
  bool m_ending = false;    // the client ended its sending side
  bool m_closed = false;
};

}  // namespace host
