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

// The moves of a clock that clients have asked for: one after another, each in slices of the loop
// with turns of everybody else in between. A move whose client is gone stops where it is.
// Owner: the controller. Thread: the framework's. Failure: what a move throws is its refusal.
// When memory runs out, the moves are given up with a log line, each where it is.
class ClockPassages {
 public:
  using Channel = std::shared_ptr<ControlChannel>;
  using Later = std::function<void(std::function<void()>)>;
  using Arrived = std::function<void(const Channel& channel, const std::string& note)>;

  // A slice ends after the expiry that makes it as long.
  static constexpr std::chrono::milliseconds kSlice{2};

  // later: runs a task behind what waits on the loop; empty: a move runs to its end at once.
  // arrived: answers a client whose move has come to its end.
  ClockPassages(VirtualClock& clock, Later later, Arrived arrived);

  // Moves now, or after the moves before it. What the client sends next waits for it.
  void add(ClockMove move, const Channel& channel);

 private:
  struct Passage {
    ClockMove move;
    Channel channel;
    std::optional<std::chrono::nanoseconds> target{};  // uptime; once begun
  };

  void pass();
  void giveUp(const char* why);
  [[nodiscard]] bool isOver(Passage& passage);
  [[nodiscard]] bool goesOnNow(std::chrono::steady_clock::time_point end) const;

  VirtualClock& m_clock;
  const Later m_later;
  const Arrived m_arrived;
  std::deque<Passage> m_waiting;  // the first is under way
  std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

}  // namespace host
