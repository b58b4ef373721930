#pragma once

#include <cstdint>
#include <string>
#include <vector>

class Method;

namespace load {

// One move of the telephone's clock, and what everybody who listens is to hear of it, in order.
struct Move {
  std::vector<std::string> requests;  // control requests
  std::vector<std::string> events;    // as they come in an event frame of the default codec
};

// A telephone's clock as seen from outside: hour after hour, at times set by hand or into another
// zone. Knows what its events must be without asking. Owner: a test. Thread: one at a time.
class ClockLife {
 public:
  // The next move: mostly the next full hour.
  Move next();

  [[nodiscard]] std::uint64_t moves() const { return m_moves; }

 private:
  Move toTheNextHour();
  Move setByHand();
  Move intoAnotherZone();
  void tellTime(Move& move) const;
  void tellDate(Move& move) const;
  // Seconds since 1970-01-01. They change with the whole seconds of the uptime.
  [[nodiscard]] std::int64_t utc() const { return m_atZero + m_uptime / 1000; }
  [[nodiscard]] std::int64_t local() const { return utc() + m_hoursEast * 3600; }

  std::int64_t m_atZero = 1'466'035'200;  // UTC when the uptime was 0: 2016-06-16T00:00:00Z
  std::int64_t m_uptime = 0;              // milliseconds
  int m_hoursEast = 0;
  std::uint64_t m_moves = 0;
};

}  // namespace load
