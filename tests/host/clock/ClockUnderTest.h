#pragma once

#include <gtest/gtest.h>

#include "SteppedTime.h"
#include "TimerOwner.h"
#include "clock/VirtualClock.h"

// A virtual clock on real time that the test lets pass, and an owner of timers on it.
class ClockUnderTest : public testing::Test {
 protected:
  SteppedTime m_real;
  host::VirtualClock m_clock{m_real.clock()};
  TimerOwner m_owner{m_clock};

  int startedTimer(host::VirtualClock::Nanoseconds period) {
    const int timer = m_clock.createTimer(m_owner, period);
    m_clock.startTimer(timer);
    return timer;
  }
};
