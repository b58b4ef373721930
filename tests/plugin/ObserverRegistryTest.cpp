// Which observers are notified, and in which order.

#include <gmock/gmock.h>

#include "support/JournalObserver.h"
#include "support/Telephone.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A running clock with its own journal of what observers hear of a set time: date, then time.
class ClockWithTwoObservers : public testing::Test {
 protected:
  ClockWithTwoObservers() { telephone.switchOn(); }

  std::vector<std::string> announced() {
    telephone.service().setTime(10, 0, 0);
    telephone.pass(std::chrono::milliseconds{1});
    return journal.take();
  }
  ClockServiceIfc& service() { return telephone.service(); }

  support::Telephone telephone;
  support::Journal journal;
  support::JournalObserver first{journal, "first"};
  support::JournalObserver second{journal, "second"};
};

TEST_F(ClockWithTwoObservers, RefusesANullObserver) {
  EXPECT_FALSE(service().observeTimeEvents(nullptr));
  EXPECT_FALSE(service().unobserveTimeEvents(nullptr));
  EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(ClockWithTwoObservers, NotifiesInOrderOfRegistrationAndAsOftenAsRegistered) {
  EXPECT_TRUE(service().observeTimeEvents(&second));
  EXPECT_TRUE(service().observeTimeEvents(&first));
  EXPECT_TRUE(service().observeTimeEvents(&second));
  EXPECT_THAT(announced(), ElementsAre("second date 16.06.2016", "first date 16.06.2016",
                                       "second date 16.06.2016", "second time 10:00:00",
                                       "first time 10:00:00", "second time 10:00:00"));
}

TEST_F(ClockWithTwoObservers, RemovesOnlyTheFirstRegistrationOfAnObserver) {
  service().observeTimeEvents(&first);
  service().observeTimeEvents(&second);
  service().observeTimeEvents(&first);
  EXPECT_TRUE(service().unobserveTimeEvents(&first));
  EXPECT_THAT(announced(), ElementsAre("second date 16.06.2016", "first date 16.06.2016",
                                       "second time 10:00:00", "first time 10:00:00"));
}

TEST_F(ClockWithTwoObservers, RefusesToRemoveAnObserverThatIsNotRegistered) {
  service().observeTimeEvents(&first);
  EXPECT_FALSE(service().unobserveTimeEvents(&second));
  EXPECT_THAT(announced(), ElementsAre("first date 16.06.2016", "first time 10:00:00"));
  EXPECT_TRUE(service().unobserveTimeEvents(&first));
  EXPECT_FALSE(service().unobserveTimeEvents(&first));
  EXPECT_THAT(announced(), IsEmpty());
}

}  // namespace
