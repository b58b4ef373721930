#include "framework/HostContext.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include "clock/VirtualClock.h"
#include "support/Part.h"

namespace {

using namespace std::chrono_literals;

class FrameworkContextOfServices : public testing::Test {
 protected:
  FrameworkContextOfServices() {
    m_service.onTimer = [this](int timer) { m_timers.push_back(timer); };
  }

  host::VirtualClock m_clock;
  host::HostContext m_context{m_clock};
  support::Part m_service;
  std::vector<int> m_timers;
};

TEST_F(FrameworkContextOfServices, FindsServicesByName) {
  EXPECT_EQ(m_context.getService("LocalMgmtIfc"), nullptr);
  m_context.add("LocalMgmtIfc", &m_service);
  EXPECT_EQ(m_context.getService("LocalMgmtIfc"), &m_service);
  EXPECT_EQ(m_context.getService("localMgmtIfc"), nullptr);
  EXPECT_EQ(m_context.getService(""), nullptr);
}

TEST_F(FrameworkContextOfServices, ReplacesAndForgetsServices) {
  support::Part other;
  m_context.add("name", &m_service);
  m_context.add("name", &other);
  EXPECT_EQ(m_context.getService("name"), &other);
  m_context.remove("name");
  m_context.remove("name");
  EXPECT_EQ(m_context.getService("name"), nullptr);
}

TEST_F(FrameworkContextOfServices, GivesTimersInMilliseconds) {
  const int timer = m_context.createTimer(m_service, 1500);
  EXPECT_EQ(timer, 1);
  m_context.startTimer(timer);
  m_clock.advance(1499ms);
  EXPECT_TRUE(m_timers.empty());
  m_clock.advance(1ms);
  EXPECT_EQ(m_timers, std::vector<int>{timer});
}

TEST_F(FrameworkContextOfServices, GivesTimersOfTheLongestPeriod) {
  m_context.startTimer(m_context.createTimer(m_service, std::numeric_limits<unsigned>::max()));
  EXPECT_EQ(m_clock.nextExpiry(), std::chrono::nanoseconds{4'294'967'295ms});
}

TEST_F(FrameworkContextOfServices, DoesNothingWithUnknownTimers) {
  const int known = m_context.createTimer(m_service, 10);
  const int deleted = m_context.createTimer(m_service, 10);
  m_context.startTimer(known);
  m_context.deleteTimer(deleted);
  for (const int timer : {deleted, 0, -1, 1000}) {
    m_context.startTimer(timer);
    m_context.stopTimer(timer);
    m_context.startTimer(timer);
    m_context.cancelTimer(timer);
    m_context.deleteTimer(timer);
    m_context.startTimer(timer);
  }
  EXPECT_EQ(m_clock.armedTimers(), 1U);
}

TEST_F(FrameworkContextOfServices, StopsCancelsAndDeletesTimers) {
  for (const auto take : {&Context::stopTimer, &Context::cancelTimer, &Context::deleteTimer}) {
    const int timer = m_context.createTimer(m_service, 10);
    m_context.startTimer(timer);
    (m_context.*take)(timer);
    EXPECT_EQ(m_clock.armedTimers(), 0U);
  }
  m_context.startTimer(3);
  EXPECT_EQ(m_clock.armedTimers(), 0U) << "deleted";
  m_context.startTimer(1);
  EXPECT_EQ(m_clock.armedTimers(), 1U) << "stopped";
}

}  // namespace
