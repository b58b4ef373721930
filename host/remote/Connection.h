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

#include "remote/Frame.h"
#include "remote/Peer.h"
#include "remote/WaitMemory.h"

namespace host {

// One client's socket on the loop: reads frames, lets the peer's outbox write, notices the end.
// Owner: the server, until closed(). Thread: the loop's. Failure: whatever the client does wrong,
// or does not do in time, ends this connection with one log line.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // The loop's executor by its own type: the type-erased one costs on every read.
  using Executor = asio::io_context::executor_type;
  using Socket = asio::basic_stream_socket<asio::local::stream_protocol, Executor>;

  // What is done with what comes. Outlives every connection that is not closed.
  class Listener {
   public:
    // Handles one frame. A text: what the client did wrong; it is then dropped.
    virtual std::optional<std::string> frame(Connection& from, const Frame& frame) = 0;

    // The client has more to be handled than fits in a turn: takeTurn() is to be called when the
    // others have had theirs.
    virtual void turnOver(Connection& from) = 0;

    // The client says no more, and its registrations can be taken back. Once.
    virtual void hungUp(Connection& from) = 0;

    // Nothing more comes from here. Once, last.
    virtual void closed(Connection& from) = 0;

   protected:
    ~Listener() = default;
  };

  // The socket that the client came in by decides what it may send.
  enum class Entrance { calls, control };

  Connection(Socket socket, Entrance entrance, std::uint64_t number, Listener& listener,
             std::chrono::milliseconds limit);

  // Once, before all else.
  void makePeer();

  // Begins to read.
  void open();

  // Handles what has come, as far as one turn goes. To be called once for each turnOver().
  void takeTurn();

  // Hangs up, without a log line.
  void close();

  // Hangs up when the host ends. A failure that the loop has not seen yet gets its log line.
  void end();

  [[nodiscard]] Peer& peer() { return *m_peer; }
  [[nodiscard]] const std::shared_ptr<Peer>& sharedPeer() const { return m_peer; }
  [[nodiscard]] Entrance entrance() const { return m_entrance; }
  [[nodiscard]] std::uint64_t number() const { return m_number; }
  [[nodiscard]] bool heard() const { return m_frames > 0; }  // a frame came before this one

 private:
  // A look at the connection that any thread may ask the loop for. Many requests are one look; it
  // has memory of its own, as a client whose request is lost would stay as it is for ever.
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
  bool m_reading = false;   // it is the client's turn to send
  bool m_cutShort = false;  // a turn ended before all that had come was handled
  bool m_held = false;      // answers come first
  bool m_ending = false;    // the client ended its sending side
  bool m_closed = false;
};

}  // namespace host
