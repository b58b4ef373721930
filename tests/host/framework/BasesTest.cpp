// What the bases of the platform do for those who do not override.
#include <gtest/gtest.h>

#include <string>

#include "Executable.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "Proxy.h"
#include "Service.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "physicalEventObserver.h"

namespace {

class PlainService : public Service {
 public:
  explicit PlainService(bool& gone) : m_gone(gone) {}
  ~PlainService() override { m_gone = true; }
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void run() override {}

 private:
  bool& m_gone;
};

class PlainProxy : public Proxy {
 public:
  explicit PlainProxy(bool& gone) : m_gone(gone) {}
  ~PlainProxy() override { m_gone = true; }
  void initProxy(ProxyRequest& /*request*/) override {}

 private:
  bool& m_gone;
};

class PlainInvoker : public Invoker {
 public:
  explicit PlainInvoker(bool& gone) : m_gone(gone) {}
  ~PlainInvoker() override { m_gone = true; }
  void handleMessage(Executable* /*executable*/, const char* /*message*/, int /*length*/,
                     InvokerResponse* /*response*/) override {}

 private:
  bool& m_gone;
};

class PlainResponse : public InvokerResponse {
 public:
  explicit PlainResponse(bool& gone) : m_gone(gone) {}
  ~PlainResponse() override { m_gone = true; }
  const char* getCodecName() override { return ""; }
  const char* getReplyAddress() override { return ""; }
  void sendReply(const char* /*data*/, int /*length*/) override {}

 private:
  bool& m_gone;
};

class PlainObserver final : public physicalEventObserver {
 public:
  void hookswitchEvent(PhysDefs::actionType /*action*/) override {}
  void jackEvent(PhysDefs::plugIdentifier /*plug*/, PhysDefs::plugStatus /*status*/) override {}
  void getSubscribingService() override {}
};

TEST(Bases, AreDeletedThroughTheirDestructors) {
  bool gone[4] = {};
  delete static_cast<Executable*>(new PlainService(gone[0]));
  delete static_cast<Proxy*>(new PlainProxy(gone[1]));
  delete static_cast<Invoker*>(new PlainInvoker(gone[2]));
  delete static_cast<InvokerResponse*>(new PlainResponse(gone[3]));
  for (const bool each : gone) EXPECT_TRUE(each);
}

TEST(Bases, IgnoreWhatIsNotOverridden) {
  host::VirtualClock clock;
  host::HostContext context(clock);
  bool gone = false;
  PlainService service(gone);
  service.timerEvent(1);
  EXPECT_EQ(service.getThreadPriorityForPlatform(), 0);
  EXPECT_EQ(service.type(), "Threadable");
  PlainProxy proxy(gone);
  proxy.init(context);
  proxy.shutdown();
  proxy.timerEvent(1);
  PlainInvoker invoker(gone);
  invoker.initInvoker(nullptr);
}

TEST(Bases, LeadFromOneToTheOther) {
  bool gone = false;
  PlainService service(gone);
  Executable* const executable = &service;
  EXPECT_EQ(dynamic_cast<Service*>(executable), &service);
  EXPECT_NE(dynamic_cast<Threadable*>(executable), nullptr);
  EXPECT_EQ(dynamic_cast<Proxy*>(executable), nullptr);
}

TEST(PhysicalEventObserver, IgnoresWhatIsNotOverridden) {
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
