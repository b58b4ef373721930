#pragma once

#include <algorithm>
#include <chrono>

namespace host::ntp {

// How long to wait before the next attempt: twice as long each time, up to a limit.
// Owner: the client. Thread: one.
class Backoff {
 public:
  using Duration = std::chrono::milliseconds;
  static constexpr Duration kFirst{15'000};  // RFC 4330: never ask more often
  static constexpr Duration kMost{1'024'000};

  explicit Backoff(Duration first = kFirst) : m_first(first), m_next(first) {}

  [[nodiscard]] Duration next() {
    const Duration now = m_next;
    m_next = std::min(m_next * 2, std::max(m_first, kMost));
    return now;
  }

  // The server asks for fewer requests: the shortest wait grows for good, too.
  void slowDown() {
    m_first = std::min(m_first * 4, std::max(m_first, kMost));
    m_next = std::max(m_next, m_first);
  }

  // After a success.
  void reset() { m_next = m_first; }

 private:
  Duration m_first;
  Duration m_next;
};

}  // namespace host::ntp
