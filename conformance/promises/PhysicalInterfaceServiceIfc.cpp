#include "PhysicalInterfaceServiceIfc.h"

#include <utility>
#include <vector>

#include "Promise.h"
#include "physicalEventObserver.h"

namespace {

using Jacks = std::vector<std::pair<int, int>>;

class JackObserver final : public physicalEventObserver {
 public:
  void hookswitchEvent(PhysDefs::actionType /*action*/) override {}
  void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) override {
    jacks.emplace_back(plug, status);
  }
  void getSubscribingService() override { ++subscriptions; }

  Jacks jacks;
  int subscriptions = 0;
};

// The group to which the clock subscribes.
const std::vector<PhysDefs::SubscriptionGrp> kJackEvents{{{1, 2, 2}}};

class PhysicalInterfaceServiceIfcPromise : public conformance::Promise {
 protected:
  PhysicalInterfaceServiceIfc& physical() {
    return service<PhysicalInterfaceServiceIfc>("PhysicalInterfaceServiceIfc");
  }

  JackObserver m_observer;
};

TEST_F(PhysicalInterfaceServiceIfcPromise, TheVariantIsFixed) {
  promises("Fixed for the life of the device.");
  const auto variant = physical().getHardwareSubVariant();
  EXPECT_EQ(physical().getHardwareSubVariant(), variant);
  platform().restart();
  EXPECT_EQ(physical().getHardwareSubVariant(), variant);
}

TEST_F(PhysicalInterfaceServiceIfcPromise, SubscribersReceiveTheirEvents) {
  promises("The observer, which is not owned, receives the events of these groups");
  physical().subscribe(&m_observer, kJackEvents);
  platform().plugJack(5, 1);
  platform().plugJack(77, 9);  // numbers without a name
  EXPECT_EQ(m_observer.jacks, (Jacks{{5, 1}, {77, 9}}));
}

TEST_F(PhysicalInterfaceServiceIfcPromise, SubscribersReceiveNoOtherEvents) {
  promises("receives the events of these groups");
  physical().subscribe(&m_observer, {});
  platform().plugJack(5, 1);
  EXPECT_EQ(m_observer.jacks, Jacks{});
}

TEST_F(PhysicalInterfaceServiceIfcPromise, SubscriptionsEndWithTheService) {
  promises("until the service is unloaded.");
  physical().subscribe(&m_observer, kJackEvents);
  platform().dropService();
  platform().plugJack(5, 1);
  EXPECT_EQ(m_observer.jacks, Jacks{});
}

TEST_F(PhysicalInterfaceServiceIfcPromise, AnyThreadMayCall) {
  promises("Thread: any.");
  PhysicalInterfaceServiceIfc& shared = physical();
  const auto variant = shared.getHardwareSubVariant();
  conformance::onTwoThreads([&] { EXPECT_EQ(shared.getHardwareSubVariant(), variant); });
}

}  // namespace
