#include "physicalEventObserver.h"

#include <string>
#include <thread>
#include <vector>

#include "PhysicalInterfaceServiceIfc.h"
#include "Promise.h"

namespace {

class PlainObserver final : public physicalEventObserver {
 public:
  void hookswitchEvent(PhysDefs::actionType /*action*/) override {}
  void jackEvent(PhysDefs::plugIdentifier /*plug*/, PhysDefs::plugStatus /*status*/) override {
    threads.push_back(std::this_thread::get_id());
  }
  void getSubscribingService() override { ++subscriptions; }

  int subscriptions = 0;
  std::vector<std::thread::id> threads;
};

class PhysicalEventObserverPromise : public conformance::Promise {
 protected:
  void subscribe() {
    service<PhysicalInterfaceServiceIfc>("PhysicalInterfaceServiceIfc")
        .subscribe(&m_observer, {{{1, 2, 2}}});
  }

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
  subscribe();
  EXPECT_EQ(m_own.subscriptions, 1);
}

TEST_F(PhysicalEventObserverPromise, HearsOfEventsOnTheFrameworkThread) {
  promises("Thread: the framework's.");
  subscribe();
  platform().plugJack(5, 1);
  EXPECT_EQ(m_own.threads, std::vector<std::thread::id>{std::this_thread::get_id()});
}

}  // namespace
