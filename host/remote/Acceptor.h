#pragma once

#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string_view>

#include "base/Descriptor.h"
#include "base/WaitMemory.h"
#include "remote/Connection.h"
#include "remote/RateLimitedLog.h"

namespace host {

// Accepts clients at a listening socket, which it does not own.
// Owner: the server. Thread: the loop's. Failure: a client that cannot be served gets the reason
// and is disconnected, with a log line (RateLimitedLog). Later clients are served, even after an
// out-of-memory failure.
class Acceptor {
 public:
  using Socket = Connection::Socket;

  Acceptor(asio::io_context& loop, int listener, std::function<void(Socket)> accepted);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  // Sends the reason to a client that is not served, if its socket and memory permit.
  static void refuse(int client, std::string_view why) noexcept;

 private:
  void wait();
  void acceptWaiting();
  [[nodiscard]] int acceptSome();  // 0, or the error to pause for
  void pause();
  void handOver(Descriptor client);
  [[nodiscard]] int turnAway();

  asio::io_context& m_loop;
  asio::local::stream_protocol::acceptor m_acceptor;
  asio::steady_timer m_pause;
  std::function<void(Socket)> m_accepted;
  Descriptor m_spare;  // closed to accept a client when no other descriptor is left
  RateLimitedLog m_turnedAway{"client turned away"};
  std::shared_ptr<bool> m_alive;
  std::shared_ptr<WaitMemory> m_waitMemory;  // so that waiting again allocates nothing
};

}  // namespace host
