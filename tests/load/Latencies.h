#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace load {

// Durations, counted in slots: of a microsecond each up to a millisecond, and beyond it of one part
// in 512, so that a stall of minutes has its place, too. Owner: a test. Thread: one at a time.
class Latencies {
 public:
  using Duration = std::chrono::steady_clock::duration;

  void add(Duration duration) {
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(duration);
    const std::size_t slot = slotOf(static_cast<std::uint64_t>(microseconds.count()));
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
      if (m_slots[slot] > left) return lastOf(slot);
      left -= m_slots[slot];
    }
    return 0;
  }

 private:
  // Each power of two has the same number of slots, each twice as wide as those before.
  static constexpr std::size_t kSlotsOfAPower = 512;
  static constexpr std::size_t kPowers = 23;  // the last slot ends after an hour
  static constexpr std::size_t kSlots = kSlotsOfAPower * (kPowers + 1);

  static std::size_t slotOf(std::uint64_t microseconds) {
    std::size_t power = 0;
    while (microseconds >> power >= 2 * kSlotsOfAPower) ++power;
    return power * kSlotsOfAPower + (microseconds >> power);
  }

  static std::uint64_t lastOf(std::size_t slot) {
    if (slot < kSlotsOfAPower) return slot;
    const std::size_t power = slot / kSlotsOfAPower - 1;
    const std::uint64_t first = slot - power * kSlotsOfAPower;
    return ((first + 1) << power) - 1;
  }

  std::vector<std::uint64_t> m_slots = std::vector<std::uint64_t>(kSlots, 0);
  std::uint64_t m_count = 0;
};

}  // namespace load
