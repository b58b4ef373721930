#pragma once

#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>

#include "remote/Connection.h"
#include "remote/Descriptor.h"

namespace host {

// Accepts clients at a listening socket, which it does not own.
// Owner: the server. Thread: the loop's. Failure: a client that cannot be taken in is turned away
// with one log line; the next ones are served.
class Acceptor {
 public:
  using Socket = Connection::Socket;

  Acceptor(asio::io_context& loop, int listener, std::function<void(Socket)> taken);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

 private:
  void wait();
  void acceptAll();
  void takeIn(Descriptor client);
  [[nodiscard]] int turnAway();

  asio::io_context& m_loop;
  asio::local::stream_protocol::acceptor m_acceptor;
  asio::steady_timer m_pause;
  std::function<void(Socket)> m_taken;
  Descriptor m_spare;  // given up for a moment when there is no other descriptor left
  std::shared_ptr<bool> m_alive;
};

}  // namespace host
