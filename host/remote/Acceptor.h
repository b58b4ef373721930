#pragma once

#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string_view>

#include "base/Descriptor.h"
#include "base/WaitMemory.h"
#include "remote/Connection.h"
#include "remote/RareLine.h"

namespace host {

// Accepts clients at a listening socket, which it does not own.
// Owner: the server. Thread: the loop's. Failure: a client that cannot be served gets the reason
// and is disconnected, with a log line (RareLine). Later clients are served, also after an
// out-of-memory failure.
class Acceptor {
 public:
  using Socket = Connection::Socket;

  Acceptor(asio::io_context& loop, int listener, std::function<void(Socket)> taken);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  // Sends the reason to a client that is not accepted, if its socket and memory permit.
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
  Descriptor m_spare;  // closed for a moment when the process has no other descriptor left
  RareLine m_turnedAway{"client turned away"};
  std::shared_ptr<bool> m_alive;
  std::shared_ptr<WaitMemory> m_waitMemory;  // lets it wait again without free memory
};

}  // namespace host
