// The default behaviour of the platform's base classes.
#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "Executable.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "Proxy.h"
#include "Service.h"
#include "physicalEventObserver.h"

namespace {

// The framework deletes objects through these bases.
static_assert(std::has_virtual_destructor_v<Executable>);
static_assert(std::has_virtual_destructor_v<Service>);
static_assert(std::has_virtual_destructor_v<Proxy>);
static_assert(std::has_virtual_destructor_v<Invoker>);
static_assert(std::has_virtual_destructor_v<InvokerResponse>);

class PlainService final : public Service {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void run() override {}
};

TEST(Service, IgnoresExpiriesAndIsAThreadWithoutAPriority) {
  PlainService service;
  service.timerEvent(1);
  EXPECT_EQ(service.getThreadPriorityForPlatform(), 0);
  EXPECT_EQ(service.type(), "Threadable");
}

class PlainObserver final : public physicalEventObserver {
 public:
  void hookswitchEvent(PhysDefs::actionType /*action*/) override {}
  void jackEvent(PhysDefs::plugIdentifier /*plug*/, PhysDefs::plugStatus /*status*/) override {}
  void getSubscribingService() override {}
};

TEST(PhysicalEventObserver, IgnoresEventsByDefault) {
  PlainObserver plain;
  physicalEventObserver& observer = plain;
  observer.buttonPressedEvent(PhysDefs::keyNone, 1, PhysDefs::actionPressed, "label");
  observer.hotplugEvent(PhysDefs::hotplugAdded, PhysDefs::hotplugBusUnknown,
                        PhysDefs::hotplugClassUnknown, "device", "details");
  observer.lampEvent(1, PhysDefs::lampOn, PhysDefs::lampColourDefault);
  observer.sliderEvent(1);
  observer.clickwheelEvent(1);
  observer.physicalInactivityTimerExpired(1);
  observer.fpkAvailableEvent();
  observer.shiftChangeEvent(true);
  observer.activityDetected();
  std::string name = "old";
  observer.getDestinationChannelName(name);
  EXPECT_EQ(name, "") << "direct calls";
}

}  // namespace
