#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "framework/ApplicationLog.h"

namespace host {

// Limits the lines of one source in a window of real time. A source is a place in the code
// (component, file and line) or a program (component), so there are few of them, and a client that
// floods the log through one place does not hide the others. Lines beyond the limit are counted.
// Owner and thread: one log. Failure: admits() and summaries() may throw std::bad_alloc.
class LogLimitBySource {
 public:
  using Clock = std::chrono::steady_clock;

  // Enough for the NTP client's restarts when the virtual clock advances by a month. With the
  // longest texts it allows 100 KiB of log a second.
  static constexpr std::size_t kMostLines = 1000;
  static constexpr std::chrono::seconds kWindow{10};

  explicit LogLimitBySource(std::size_t mostLines = kMostLines, Clock::duration window = kWindow);

  // Whether the entry may be written. If not, it is counted.
  [[nodiscard]] bool admits(const LogEntry& entry, Clock::time_point now);

  // For each source whose window is over and that has suppressed entries: a line with their number.
  [[nodiscard]] std::vector<LogEntry> summaries(Clock::time_point now);

  // When summaries() will return a line; Clock::time_point::max() while nothing is suppressed.
  [[nodiscard]] Clock::time_point nextSummary() const { return m_nextSummary; }

 private:
  using Source = std::tuple<std::string, std::string, int>;  // component, file, line
  struct Window {
    Clock::time_point end;
    std::size_t written = 0;
    std::size_t suppressed = 0;
    std::chrono::nanoseconds wall{0};  // of the last suppressed entry
  };

  [[nodiscard]] LogEntry summary(const Source& source, const Window& window) const;

  const std::size_t m_mostLines;
  const Clock::duration m_length;
  std::map<Source, Window> m_windows;
  Clock::time_point m_nextSummary = Clock::time_point::max();
};

}  // namespace host
