#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

#include "clock/VirtualClock.h"
#include "support/Part.h"

// A paused virtual clock whose real time passes only when the test says so, and an owner of timers
// that records their expiries.
class ClockUnderTest : public testing::Test {
 protected:
  using Nanoseconds = host::VirtualClock::Nanoseconds;
  using Ids = std::vector<int>;
  // Timer and uptime of each expiry, in order.
  using Expiries = std::vector<std::pair<int, Nanoseconds>>;

  ClockUnderTest() {
    m_owner.onTimer = [this](int timer) {
      m_expiries.emplace_back(timer, m_clock.uptime());
      if (m_onExpiry) m_onExpiry(timer);
    };
  }

  void passRealTime(Nanoseconds time) { m_real += time.count(); }

  int timer(Nanoseconds period) { return m_clock.createTimer(m_owner, period); }
  int startedTimer(Nanoseconds period) {
    const int id = timer(period);
    m_clock.startTimer(id);
    return id;
  }
  [[nodiscard]] Ids expiredIds() const {
    Ids ids;
    for (const auto& expiry : m_expiries) ids.push_back(expiry.first);
    return ids;
  }

  std::atomic<Nanoseconds::rep> m_real{1'000'000};
  host::VirtualClock m_clock{[this] { return Nanoseconds{m_real}; }};
  support::Part m_owner;
  Expiries m_expiries;
  std::function<void(int)> m_onExpiry;  // called after the expiry is recorded
};
