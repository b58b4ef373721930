// How much a clock does when nobody touches it: each timer that expires costs the device power.

#include <gtest/gtest.h>

#include <algorithm>

#include "plugin/Telephone.h"

namespace {

using std::chrono::hours;

constexpr std::int64_t kDaysOfYear = 365;

// A clock under central European time with its first day behind it.
class QuietClock : public testing::Test {
 protected:
  QuietClock() {
    telephone.storeZone("1", true, true, 9);
    telephone.store("FallbackDateTime", "2029-12-31T23:00:00+00:00");  // a local midnight
    telephone.switchOn();
    // The first hour sets the zone's hours, and the restarts have found their place in the hour.
    telephone.pass(hours{1} + std::chrono::minutes{30});
    telephone.events.take();
    m_expiries = telephone.clock.expiriesDelivered();
    m_stored = telephone.settings.setsAsked();
  }

  void pass(std::int64_t days) {
    telephone.pass(hours{24 * days});
    m_events = telephone.events.take();
  }
  std::int64_t events(const std::string& kind) const {
    return std::count_if(m_events.begin(), m_events.end(),
                         [&](const std::string& event) { return event.rfind(kind, 0) == 0; });
  }
  std::uint64_t expiries() const { return telephone.clock.expiriesDelivered() - m_expiries; }
  std::size_t stored() const { return telephone.settings.setsAsked() - m_stored; }

  plugin::Telephone telephone;

 private:
  std::vector<std::string> m_events;
  std::uint64_t m_expiries;
  std::size_t m_stored;
};

TEST_F(QuietClock, TellsTwentyFourHoursAndOneDateADay) {
  pass(1);
  EXPECT_EQ(events("time"), 24);
  EXPECT_EQ(events("date"), 1);
  EXPECT_EQ(events("zone"), 0);
}

TEST_F(QuietClock, SavesTheTimeTwiceADayAndNothingElse) {
  pass(1);
  EXPECT_EQ(stored(), 2U);
}

// The midnight is absorbed by the hour; each hour has its restart of the NTP client.
TEST_F(QuietClock, IsWokenFiftyTimesADay) {
  pass(1);
  EXPECT_EQ(expiries(), 24U + 24U + 2U);
}

TEST_F(QuietClock, TellsEveryHourAndEveryDateOfAYear) {
  pass(kDaysOfYear);
  EXPECT_EQ(events("time"), kDaysOfYear * 24);
  EXPECT_EQ(events("date"), kDaysOfYear);
  EXPECT_EQ(events("zone"), 0);
  EXPECT_EQ(stored(), kDaysOfYear * 2U);
  EXPECT_EQ(expiries(), kDaysOfYear * 50U);
}

}  // namespace
