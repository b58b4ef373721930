#pragma once

#include <cstdint>
#include <string>

#include "simulation/model/Civil.h"

namespace simulation {

// The day and time of one change of daylight saving, as POSIX writes it ("M3.5.0/02:00").
struct Change {
  std::int64_t month = 0;  // 1-12; 0: the change is the first instant of the year
  std::int64_t week = 0;   // 1-5, 5 is the last
  std::int64_t weekday = 0;
  std::int64_t seconds = 0;  // local time of the day

  // Seconds since 1970-01-01 of the local reading.
  [[nodiscard]] std::int64_t readingIn(std::int64_t year) const;
};

// What a POSIX TZ text means, reckoned from the text alone. Offsets are seconds east of UTC. A text
// that breaks off reads as the C library reads it: what is missing is zero.
class Zone {
 public:
  Zone() = default;  // UTC
  explicit Zone(const std::string& tz);

  [[nodiscard]] bool isDaylight(std::int64_t instant) const;
  [[nodiscard]] std::int64_t offsetAt(std::int64_t instant) const;
  [[nodiscard]] Civil localAt(std::int64_t instant) const;

  // The instant of a local reading whose daylight flag is given. Fields may overflow.
  [[nodiscard]] std::int64_t instantOf(const Civil& local, bool daylight) const;

  [[nodiscard]] bool changes() const { return m_changes; }
  // The first change of the offset after `instant` within two years; else `instant`.
  [[nodiscard]] std::int64_t changeAfter(std::int64_t instant) const;

 private:
  [[nodiscard]] bool isSouthern() const;
  [[nodiscard]] std::int64_t springIn(std::int64_t year) const;
  [[nodiscard]] std::int64_t autumnIn(std::int64_t year) const;

  std::int64_t m_standard = 0;
  std::int64_t m_daylight = 0;
  bool m_changes = false;
  Change m_begin;
  Change m_end;
};

}  // namespace simulation
