#include "framework/HostContext.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "clock/VirtualClock.h"
#include "support/Part.h"

namespace {

using namespace std::chrono_literals;

class ServicesContext : public testing::Test {
 protected:
  host::VirtualClock m_clock;
  host::HostContext m_context{m_clock};
  support::Part m_service;
};

TEST_F(ServicesContext, ReplacesAndRemovesServices) {
  support::Part other;
  m_context.add("name", &m_service);
  m_context.add("name", &other);
  EXPECT_EQ(m_context.getService("name"), &other);
  m_context.remove("name");
  m_context.remove("name");
  EXPECT_EQ(m_context.getService("name"), nullptr);
}

TEST_F(ServicesContext, CreatesTimersOfTheLongestPeriod) {
  m_context.startTimer(m_context.createTimer(m_service, std::numeric_limits<unsigned>::max()));
  EXPECT_EQ(m_clock.nextExpiry(), std::chrono::nanoseconds{4'294'967'295ms});
}

}  // namespace
