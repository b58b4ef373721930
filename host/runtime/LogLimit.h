#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "framework/ApplicationLog.h"

namespace host {

// How many lines one source may write: a source is a place in the code (component, file and line),
// so there are few of them, and a client that floods the log through one place hides no other. What
// a source writes beyond its limit is counted. Time is real time, also under a virtual clock.
// Owner and thread: one log. Failure: admits() and summaries() may throw std::bad_alloc.
class LogLimit {
 public:
  using Clock = std::chrono::steady_clock;

  // Enough for a client's restarts in a month that passes at once. With the longest texts it makes
  // 100 KiB of log a second.
  static constexpr std::size_t kMostLines = 1000;
  static constexpr std::chrono::seconds kWindow{10};

  explicit LogLimit(std::size_t mostLines = kMostLines, Clock::duration window = kWindow);

  // Whether the entry may be written. One that may not is counted.
  [[nodiscard]] bool admits(const LogEntry& entry, Clock::time_point now);

  // For each source whose window is over: a line with the number of its suppressed entries, if any.
  [[nodiscard]] std::vector<LogEntry> summaries(Clock::time_point now);

  // When summaries() will have a line; Clock::time_point::max() while nothing is suppressed.
  [[nodiscard]] Clock::time_point nextSummary() const { return m_nextSummary; }

 private:
  using Source = std::tuple<std::string, std::string, int>;  // component, file, line
  struct Window {
    Clock::time_point end;
    std::size_t written = 0;
    std::size_t suppressed = 0;
    std::chrono::nanoseconds wall{0};  // of the entry suppressed last
  };

  [[nodiscard]] LogEntry summary(const Source& source, const Window& window) const;

  const std::size_t m_mostLines;
  const Clock::duration m_length;
  std::map<Source, Window> m_windows;
  Clock::time_point m_nextSummary = Clock::time_point::max();
};

}  // namespace host
