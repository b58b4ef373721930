#pragma once

#include <functional>
#include <string_view>

#include "base/Descriptor.h"
#include "base/IoLoop.h"
#include "remote/OneLinePerPause.h"

namespace host {

// Accepts clients at a listening socket, which it does not own.
// Owner: the server. Thread: the loop's. Failure: a client that cannot be served gets the reason
// and is disconnected, with a log line (OneLinePerPause). Later clients are served, even after an
// out-of-memory failure.
class Acceptor {
 public:
  Acceptor(IoLoop& loop, int listener, std::function<void(Descriptor)> accepted);
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  // Sends the reason to a client that is not served, if its socket and memory permit.
  static void refuse(int client, std::string_view why) noexcept;

 private:
  void acceptWaiting();
  [[nodiscard]] int acceptSome();  // 0, or the error to pause for
  void handOver(Descriptor client);
  [[nodiscard]] int turnAway();

  const int m_listener;
  const std::function<void(Descriptor)> m_accepted;
  Descriptor m_spare;  // closed to accept a client when no other descriptor is left
  OneLinePerPause m_turnedAway{"client turned away"};
  IoLoop::Timer m_pause;
  IoLoop::Watch m_watch;
};

}  // namespace host
