#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace load {

// Durations, a microsecond each to a slot up to a tenth of a second, and those beyond it in one.
// Owner: a test. Thread: one at a time.
class Latencies {
 public:
  using Duration = std::chrono::steady_clock::duration;

  void add(Duration duration) {
    const auto slot = static_cast<std::size_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(duration).count());
    ++m_slots[slot < kSlots ? slot : kSlots - 1];
    ++m_count;
  }

  void add(const Latencies& others) {
    for (std::size_t slot = 0; slot < kSlots; ++slot) m_slots[slot] += others.m_slots[slot];
    m_count += others.m_count;
  }

  [[nodiscard]] std::uint64_t count() const { return m_count; }

  // Microseconds that such a part of them did not exceed; 0 without any.
  [[nodiscard]] std::uint64_t quantile(double part) const {
    auto left = static_cast<std::uint64_t>(static_cast<double>(m_count) * part);
    for (std::size_t slot = 0; slot < kSlots; ++slot) {
      if (m_slots[slot] > left) return slot;
      left -= m_slots[slot];
    }
    return 0;
  }

 private:
  static constexpr std::size_t kSlots = 100'001;
  std::vector<std::uint64_t> m_slots = std::vector<std::uint64_t>(kSlots, 0);
  std::uint64_t m_count = 0;
};

}  // namespace load
