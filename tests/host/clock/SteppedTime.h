#pragma once

#include <atomic>
#include <chrono>

#include "clock/VirtualClock.h"

// Real time that passes when a test says so.
class SteppedTime {
 public:
  void pass(std::chrono::nanoseconds time) { m_now += time.count(); }
  [[nodiscard]] host::VirtualClock::RealClock clock() {
    return [this] { return std::chrono::nanoseconds{m_now}; };
  }

 private:
  std::atomic<std::chrono::nanoseconds::rep> m_now{1'000'000};
};
