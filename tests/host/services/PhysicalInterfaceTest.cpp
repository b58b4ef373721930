#include "services/PhysicalInterface.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "physicalEventObserver.h"

namespace host {
namespace {

using Jack = std::pair<int, int>;

class Observer final : public physicalEventObserver {
 public:
  void hookswitchEvent(PhysDefs::actionType) override {}
  void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) override {
    jacks.emplace_back(plug, status);
  }
  void getSubscribingService() override { ++asked; }

  std::vector<Jack> jacks;
  int asked = 0;
};

PhysDefs::SubscriptionGrp group(int kind) {
  return {{kind, 2, 2}};
}

TEST(PhysicalInterface, HasTheVariantThatItWasGiven) {
  EXPECT_EQ(PhysicalInterface(3).getHardwareSubVariant(), 3);
  EXPECT_EQ(PhysicalInterface(-1).getHardwareSubVariant(), -1);
}

TEST(PhysicalInterface, NotifiesSubscribersToKindOneOfEveryPlug) {
  PhysicalInterface physical(0);
  Observer observer;
  physical.subscribe(&observer, {group(1)});
  physical.subscribe(nullptr, {group(1)});  // ignored
  physical.jack(5, 1);
  physical.jack(5, 0);
  physical.jack(99, -7);
  EXPECT_EQ(observer.jacks, (std::vector<Jack>{{5, 1}, {5, 0}, {99, -7}}));
  EXPECT_EQ(observer.asked, 1);
  physical.dropSubscribers();
  physical.jack(5, 1);
  EXPECT_EQ(observer.jacks.size(), 3U);
}

TEST(PhysicalInterface, NotifiesASubscriberOnceIfOneOfItsGroupsHasKindOne) {
  const struct {
    std::vector<PhysDefs::SubscriptionGrp> groups;
    std::size_t events;
  } rows[] = {
      {{}, 0}, {{group(0), group(2)}, 0}, {{group(1)}, 1}, {{group(2), group(1), group(1)}, 1}};
  for (const auto& row : rows) {
    PhysicalInterface physical(0);
    Observer observer;
    physical.subscribe(&observer, row.groups);
    physical.jack(5, 1);
    EXPECT_EQ(observer.jacks.size(), row.events) << row.groups.size() << " groups";
  }
}

TEST(PhysicalInterface, CountsClockChanges) {
  PhysicalInterface physical(0);
  physical.beginClockChange();
  physical.endClockChange();
  physical.beginClockChange();
  EXPECT_EQ(physical.clockChanges().begun, 2);
  EXPECT_EQ(physical.clockChanges().ended, 1);
}

}  // namespace
}  // namespace host
