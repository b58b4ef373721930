#include "physicalEventObserver.h"

#include <string>
#include <vector>

#include "Context.h"
#include "Executable.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Promise.h"

namespace {

class PlainObserver final : public physicalEventObserver {
 public:
  void hookswitchEvent(PhysDefs::actionType /*action*/) override {}
  void jackEvent(PhysDefs::plugIdentifier /*plug*/, PhysDefs::plugStatus /*status*/) override {}
  void getSubscribingService() override { ++subscriptions; }

  int subscriptions = 0;
};

class PhysicalEventObserverPromise : public conformance::Promise {
 protected:
  PlainObserver m_own;
  physicalEventObserver& m_observer = m_own;
};

TEST_F(PhysicalEventObserverPromise, IgnoresEventsByDefault) {
  promises("Defaults ignore the event.");
  m_observer.buttonPressedEvent(PhysDefs::keyNone, 1, PhysDefs::actionPressed, "label");
  m_observer.hotplugEvent(PhysDefs::hotplugAdded, PhysDefs::hotplugBusUnknown,
                          PhysDefs::hotplugClassUnknown, "device", "details");
  m_observer.lampEvent(1, PhysDefs::lampOn, PhysDefs::lampColourDefault);
  m_observer.sliderEvent(1);
  m_observer.clickwheelEvent(1);
  m_observer.physicalInactivityTimerExpired(1);
  m_observer.fpkAvailableEvent();
  m_observer.shiftChangeEvent(true);
  m_observer.activityDetected();
}

TEST_F(PhysicalEventObserverPromise, IsCalledDirectlyByDefault) {
  promises("The default leaves `name` empty: direct calls.");
  std::string name;
  m_observer.getDestinationChannelName(name);
  EXPECT_EQ(name, "");
}

TEST_F(PhysicalEventObserverPromise, HearsOfItsSubscription) {
  promises("Called at subscription.");
  auto* const physical = dynamic_cast<PhysicalInterfaceServiceIfc*>(
      platform().context().getService("PhysicalInterfaceServiceIfc"));
  ASSERT_NE(physical, nullptr);
  physical->subscribe(&m_observer, {{{1, 2, 2}}});
  EXPECT_EQ(m_own.subscriptions, 1);
  platform().dropService();
}

}  // namespace
