// What observers hear around changes to and from daylight saving.

#include <gmock/gmock.h>

#include "plugin/ClockOnWatchedTimers.h"

namespace {

using plugin::ClockOnWatchedTimers;
using plugin::OrderedTimers;
using std::chrono::hours;
using std::chrono::seconds;
using testing::ElementsAre;

// Zone 9 at +1: 02:00 on 31 March 2030 is followed by 03:00, 03:00 on 27 October by 02:00.
TEST_F(ClockOnWatchedTimers, SkipsAnHourInSpring) {
  zone(9, "1");
  startAt("2030-03-30T23:59:59");
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 01:00:00", "time 03:00:00"));
  EXPECT_THAT(heard(hours{20} + seconds{1}).back(), "date 01.04.2030");
}

TEST_F(ClockOnWatchedTimers, RepeatsAnHourInAutumn) {
  zone(9, "1");
  startAt("2030-10-26T23:59:59");
  EXPECT_THAT(heard(hours{3}), ElementsAre("time 02:00:00", "time 02:00:00", "time 03:00:00"));
}

// Zone 5 at -3, at midnight: 00:00 on 20 October 2030 is 01:00, 00:00 on 17 February 2030 is 23:00
// on the 16th again.
class ClockInBrazil : public ClockOnWatchedTimers {
 protected:
  explicit ClockInBrazil(OrderedTimers::Order order = OrderedTimers::Order::ofCreation)
      : ClockOnWatchedTimers(order) {
    zone(5, "-3");
  }
};
class ClockInBrazilOnReversedTimers : public ClockInBrazil {
 protected:
  ClockInBrazilOnReversedTimers() : ClockInBrazil(OrderedTimers::Order::reversed) {}
};

TEST_F(ClockInBrazil, AnnouncesTheDayThatBeginsAtOne) {
  startAt("2030-10-20T01:59:59");
  EXPECT_THAT(heard(hours{1} + seconds{1}),
              ElementsAre("time 23:00:00", "time 01:00:00", "date 20.10.2030"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 02:00:00"));
  EXPECT_THAT(heard(hours{22}).back(), "date 21.10.2030");
}

TEST_F(ClockInBrazilOnReversedTimers, AnnouncesTheDayThatBeginsAtOne) {
  startAt("2030-10-20T01:59:59");
  EXPECT_THAT(heard(hours{1} + seconds{1}),
              ElementsAre("time 23:00:00", "date 20.10.2030", "time 01:00:00"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 02:00:00"));
}

TEST_F(ClockInBrazil, AnnouncesTheRealMidnightAfterTheRepeatedHour) {
  startAt("2030-02-17T00:59:59");
  EXPECT_THAT(heard(hours{3}),
              ElementsAre("time 23:00:00", "time 23:00:00", "time 00:00:00", "date 17.02.2030"));
}

TEST_F(ClockInBrazilOnReversedTimers, AnnouncesTheRealMidnightAfterTheRepeatedHour) {
  startAt("2030-02-17T00:59:59");
  EXPECT_THAT(heard(hours{3}), ElementsAre("time 23:00:00", "date 16.02.2030", "time 23:00:00",
                                           "date 17.02.2030", "time 00:00:00"));
}

}  // namespace
