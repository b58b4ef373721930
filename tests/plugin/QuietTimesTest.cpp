// What an idle clock does. Each timer that expires costs the device power.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/Telephone.h"

namespace {

using std::chrono::hours;

// It announces hours and dates, restarts the NTP client and saves the time.
TEST(QuietClock, WakesFiftyTimesADay) {
  constexpr std::int64_t kDays = 365;
  support::Telephone telephone;
  telephone.storeZone("1", true, true, 9);
  telephone.store("FallbackDateTime", "2029-12-31T23:00:00+00:00");  // a local midnight
  telephone.switchOn();
  // After the first full hour of the zone and the first restart of the NTP client.
  telephone.pass(hours{1} + std::chrono::minutes{30});
  telephone.events.take();
  const auto expiries = telephone.clock.expiriesDelivered();
  const auto stored = telephone.settings.setsAsked();
  telephone.pass(hours{24 * kDays});
  const auto events = telephone.events.take();
  const auto count = [&](const std::string& kind) {
    return std::count_if(events.begin(), events.end(),
                         [&](const std::string& event) { return event.rfind(kind, 0) == 0; });
  };
  EXPECT_EQ(count("time"), kDays * 24);
  EXPECT_EQ(count("date"), kDays);
  EXPECT_EQ(count("zone"), 0);
  EXPECT_EQ(telephone.settings.setsAsked() - stored, kDays * 2U);
  // 24 hours, 24 restarts of the NTP client, 2 saves; the hour absorbs the midnight.
  EXPECT_EQ(telephone.clock.expiriesDelivered() - expiries, kDays * 50U);
}

}  // namespace
