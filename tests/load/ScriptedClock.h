#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace load {

// One move of the telephone's clock, and the events that each observer must receive, in order.
struct Move {
  std::vector<std::string> requests;  // control requests
  std::vector<std::string> events;    // payloads of event frames in the default codec
};

// Moves a telephone's clock from hour to hour, sets it by hand and changes its zone. Knows the
// events without asking the host. Owner: a test. Thread: one at a time.
class ScriptedClock {
 public:
  // The next move: mostly to the next full hour.
  Move next();

  [[nodiscard]] std::uint64_t count() const { return m_count; }

 private:
  Move toTheNextHour();
  Move setByHand();
  Move changeZone();
  [[nodiscard]] std::string timeEvent() const;
  [[nodiscard]] std::string dateEvent() const;
  // Seconds since 1970-01-01. They change with the whole seconds of the uptime.
  [[nodiscard]] std::int64_t utc() const { return m_utcAtStart + m_uptime / 1000; }
  [[nodiscard]] std::int64_t local() const { return utc() + m_hoursEast * 3600; }

  std::int64_t m_utcAtStart = 1'466'035'200;  // 2016-06-16T00:00:00Z
  std::int64_t m_uptime = 0;                  // milliseconds
  int m_hoursEast = 0;
  std::uint64_t m_count = 0;
};

}  // namespace load
