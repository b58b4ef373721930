#pragma once

#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string_view>

#include "remote/Connection.h"
#include "remote/Descriptor.h"
#include "remote/RareLine.h"
#include "remote/WaitMemory.h"

namespace host {

// Accepts clients at a listening socket, which it does not own.
// Owner: the server. Thread: the loop's. Failure: a client that cannot be taken in is told why and
// turned away, and logged (RareLine). The next ones are served, also after memory has run out.
class Acceptor {
 public:
  using Socket = Connection::Socket;

  Acceptor(asio::io_context& loop, int listener, std::function<void(Socket)> taken);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  // Tells a client that is not taken in, as far as its socket takes it and there is memory.
  static void refuse(int client, std::string_view why) noexcept;

 private:
  void wait();
  void acceptAll();
  [[nodiscard]] int acceptSome();  // 0, or the error to pause for
  void pause();
  void takeIn(Descriptor client);
  [[nodiscard]] int turnAway();

  asio::io_context& m_loop;
  asio::local::stream_protocol::acceptor m_acceptor;
  asio::steady_timer m_pause;
  std::function<void(Socket)> m_taken;
  Descriptor m_spare;  // given up for a moment when there is no other descriptor left
  RareLine m_turnedAway{"client turned away"};
  std::shared_ptr<bool> m_alive;
  std::shared_ptr<WaitMemory> m_waitMemory;  // accepting goes on when memory has run out
};

}  // namespace host
