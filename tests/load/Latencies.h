#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

namespace load {

// How long a client waits for an answer or an event. A host that needs longer has failed.
inline constexpr std::chrono::seconds kAnswerLimit{20};

// Durations of calls or moves of the clock. Owner: a test. Thread: one at a time.
class Latencies {
 public:
  void add(std::chrono::steady_clock::duration duration) {
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(duration);
    m_microseconds.push_back(static_cast<std::uint32_t>(microseconds.count()));
  }
  void add(const Latencies& others) {
    m_microseconds.insert(m_microseconds.end(), others.m_microseconds.begin(),
                          others.m_microseconds.end());
  }

  [[nodiscard]] std::size_t count() const { return m_microseconds.size(); }

  // Microseconds that this part of them, 0 to 1, did not exceed; 0 without any.
  [[nodiscard]] std::uint64_t quantile(double part) const {
    if (count() == 0) return 0;
    const auto index = static_cast<std::size_t>(static_cast<double>(count()) * part);
    std::vector<std::uint32_t> sorted = m_microseconds;
    const auto nth = sorted.begin() + static_cast<std::ptrdiff_t>(std::min(index, count() - 1));
    std::nth_element(sorted.begin(), nth, sorted.end());
    return *nth;
  }

 private:
  std::vector<std::uint32_t> m_microseconds;
};

}  // namespace load
