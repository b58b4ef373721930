#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include "operator/ClockMoves.h"

namespace host {

class ControlChannel;
class VirtualClock;

// The moves of the clock that clients have requested, one after another. A move runs in slices on
// the loop, which serves other clients in between. A move whose client is gone stops where it is.
// Owner: the controller. Thread: the framework's. Failure: a move that throws is refused.
// When memory runs out, all moves stop where they are, with a log line.
class ClockMoveQueue {
 public:
  using Channel = std::shared_ptr<ControlChannel>;
  using Later = std::function<void(std::function<void()>)>;
  using Arrived = std::function<void(const Channel& channel, const std::string& note)>;

  // A slice ends after the first timer that expires beyond this.
  static constexpr std::chrono::milliseconds kSlice{2};

  // later: queues a task on the loop; empty: a move runs to its end at once.
  // arrived: answers the client of a completed move.
  ClockMoveQueue(VirtualClock& clock, Later later, Arrived arrived);

  // Begins the move now, or after those before it. The client's next request waits for its end.
  void add(ClockMove move, const Channel& channel);

 private:
  struct PendingMove {
    ClockMove move;
    Channel channel;
    std::optional<std::chrono::nanoseconds> target{};  // uptime; once begun
  };

  void runSlice();
  void giveUp(const char* why);
  [[nodiscard]] bool isOver(PendingMove& pending);
  [[nodiscard]] bool goesOnNow(std::chrono::steady_clock::time_point end) const;

  VirtualClock& m_clock;
  const Later m_later;
  const Arrived m_arrived;
  std::deque<PendingMove> m_waiting;  // the first has begun
  std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

}  // namespace host
