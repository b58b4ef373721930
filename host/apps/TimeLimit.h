#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace host {

// A limit of real time that begins now, or none. Immutable.
class TimeLimit {
 public:
  using Limit = std::chrono::milliseconds;

  explicit TimeLimit(std::optional<Limit> limit) {
    if (limit) m_end = Clock::now() + *limit;
  }

  [[nodiscard]] bool over() const { return m_end && Clock::now() >= *m_end; }

  // How long to wait now: until the end, and at most an hour, after which the wait is repeated.
  [[nodiscard]] Limit left() const {
    constexpr Limit kLongest = std::chrono::hours(1);
    if (!m_end) return kLongest;
    return std::clamp(std::chrono::ceil<Limit>(*m_end - Clock::now()), Limit::zero(), kLongest);
  }

 private:
  using Clock = std::chrono::steady_clock;
  std::optional<Clock::time_point> m_end;
};

}  // namespace host
