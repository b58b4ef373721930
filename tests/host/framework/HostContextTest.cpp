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

class ServicesContext : public testing::Test {
 protected:
  ServicesContext() {
    m_service.onTimer = [this](int timer) { m_timers.push_back(timer); };
  }

  host::VirtualClock m_clock;
  host::HostContext m_context{m_clock};
  support::Part m_service;
  std::vector<int> m_timers;
};

TEST_F(ServicesContext, FindsServicesByName) {
  EXPECT_EQ(m_context.getService("LocalMgmtIfc"), nullptr);
  m_context.add("LocalMgmtIfc", &m_service);
  EXPECT_EQ(m_context.getService("LocalMgmtIfc"), &m_service);
  EXPECT_EQ(m_context.getService("localMgmtIfc"), nullptr);
  EXPECT_EQ(m_context.getService(""), nullptr);
}

TEST_F(ServicesContext, ReplacesAndRemovesServices) {
  support::Part other;
  m_context.add("name", &m_service);
  m_context.add("name", &other);
  EXPECT_EQ(m_context.getService("name"), &other);
  m_context.remove("name");
  m_context.remove("name");
  EXPECT_EQ(m_context.getService("name"), nullptr);
}

TEST_F(ServicesContext, CreatesTimersInMilliseconds) {
  const int timer = m_context.createTimer(m_service, 1500);
  EXPECT_EQ(timer, 1);
  m_context.startTimer(timer);
  m_clock.advance(1499ms);
  EXPECT_TRUE(m_timers.empty());
  m_clock.advance(1ms);
  EXPECT_EQ(m_timers, std::vector<int>{timer});
}

TEST_F(ServicesContext, CreatesTimersOfTheLongestPeriod) {
  m_context.startTimer(m_context.createTimer(m_service, std::numeric_limits<unsigned>::max()));
  EXPECT_EQ(m_clock.nextExpiry(), std::chrono::nanoseconds{4'294'967'295ms});
}

TEST_F(ServicesContext, StopsCancelsAndDeletesTimers) {
  for (const auto disarm : {&Context::stopTimer, &Context::cancelTimer, &Context::deleteTimer}) {
    const int timer = m_context.createTimer(m_service, 10);
    m_context.startTimer(timer);
    (m_context.*disarm)(timer);
    EXPECT_EQ(m_clock.armedTimers(), 0U);
  }
  m_context.startTimer(3);
  EXPECT_EQ(m_clock.armedTimers(), 0U) << "deleted";
  m_context.startTimer(1);
  EXPECT_EQ(m_clock.armedTimers(), 1U) << "stopped";
}

}  // namespace
