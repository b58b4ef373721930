#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace powercut {

// Which saved time a restart may show: the one acknowledged last, or one that the clock has come to
// since. Owner: a test. Thread: one at a time.
class SavedTimes {
 public:
  // A restart has shown it: the clock stands there now.
  void found(const std::string& time) { m_possible = {time}; }

  // The clock is about to be moved on; from now on this may be saved. Returns its UTC string.
  std::string next();

  // The time was saved: what came before it must not come back.
  void acknowledged(const std::string& time);

  [[nodiscard]] bool allows(const std::string& time) const;

  // For messages.
  [[nodiscard]] std::string allowed() const;

  [[nodiscard]] std::int64_t instant() const { return m_instant; }  // seconds since 1970, UTC

 private:
  std::int64_t m_instant = 1'767'225'600;  // 2026-01-01T00:00:00Z
  // Oldest first. A telephone that has never saved one starts with the first time of the device.
  std::vector<std::string> m_possible{"2016-06-16T00:00:00+00:00"};
};

}  // namespace powercut
