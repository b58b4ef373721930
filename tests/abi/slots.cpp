// Only compiled: slots.py reads the order of virtual slots from the compiler's dump of these
// classes. The dump names a slot in full only where a class overrides it for a base that is not the
// first, so a probe does that for every slot of an interface.
#include <string>
#include <type_traits>

#include "ClockService.h"
#include "ClockServiceIfc.h"
#include "ClockServiceObserverIfc.h"
#include "ClockServiceObserverProxy.h"
#include "Executable.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "MessageCodec.h"
#include "MgmtAgentIfc.h"
#include "PhysDefs.h"
#include "Proxy.h"
#include "SNTPTimeChangeObserver.h"
#include "Service.h"
#include "Threadable.h"
#include "physicalEventObserver.h"

static_assert(std::is_convertible_v<ClockService*, Executable*>);
static_assert(std::is_convertible_v<ClockService*, ClockServiceIfc*>);
static_assert(std::is_convertible_v<ClockService*, MgmtAgentIfc*>);
static_assert(std::is_convertible_v<ClockService*, physicalEventObserver*>);
static_assert(std::is_convertible_v<ClockService*, SNTPTimeChangeObserver*>);
static_assert(std::is_convertible_v<ClockServiceObserverProxy*, Proxy*>);
static_assert(std::is_convertible_v<ClockServiceObserverProxy*, ClockServiceObserverIfc*>);

struct First {
  virtual ~First();
};

struct ExecutableProbe : First, Executable {
  ~ExecutableProbe() override;
  void init(Context&) override;
  void shutdown() override;
  void timerEvent(int) override;
};

struct ThreadableProbe : First, Threadable {
  void run() override;
  int getThreadPriorityForPlatform() override;
  std::string type() override;
};

struct ServiceProbe : First, Service {
  ~ServiceProbe() override;
  void init(Context&) override;
  void shutdown() override;
  void timerEvent(int) override;
  void handleMsg(const char*, int, std::string, CommsChannelIfc&,
                 CommsChannelDataContainerMessage*) override;
  void run() override;
  int getThreadPriorityForPlatform() override;
  std::string type() override;
};

struct ProxyProbe : First, Proxy {
  ~ProxyProbe() override;
  void init(Context&) override;
  void shutdown() override;
  void timerEvent(int) override;
  void initProxy(ProxyRequest&) override;
};

struct InvokerProbe : First, Invoker {
  ~InvokerProbe() override;
  void handleMessage(Executable*, const char*, int, InvokerResponse*) override;
  void initInvoker(FrameworkContext*) override;
};

struct MessageCodecProbe : First, MessageCodec {
  void encode(Method&, std::iostream&) override;
  bool decode(std::iostream&, Method&) override;
};

struct MgmtAgentIfcProbe : First, MgmtAgentIfc {
  bool setData(ManageableData&) override;
  bool getData(ManageableData&) override;
  void manageableDataChanged(ManageableData&) override;
  bool resetUserData() override;
};

struct physicalEventObserverProbe : First, physicalEventObserver {
  void buttonPressedEvent(PhysDefs::keyFunctionType, int, PhysDefs::actionType,
                          std::string) override;
  void hookswitchEvent(PhysDefs::actionType) override;
  void jackEvent(PhysDefs::plugIdentifier, PhysDefs::plugStatus) override;
  void hotplugEvent(PhysDefs::hotplugAction, PhysDefs::hotplugBus, PhysDefs::hotplugClass,
                    std::string, std::string) override;
  void lampEvent(int, PhysDefs::lampMode, PhysDefs::lampColour) override;
  void sliderEvent(int) override;
  void clickwheelEvent(int) override;
  void physicalInactivityTimerExpired(int) override;
  void fpkAvailableEvent() override;
  void shiftChangeEvent(bool) override;
  void activityDetected() override;
  void getDestinationChannelName(std::string&) override;
  void getSubscribingService() override;
};

struct SNTPTimeChangeObserverProbe : First, SNTPTimeChangeObserver {
  ~SNTPTimeChangeObserverProbe() override;
  void handleSNTPClientUpdate(long) override;
};

struct ClockServiceIfcProbe : First, ClockServiceIfc {
  std::string getTime() override;
  void getTime(int&, int&, int&) override;
  std::string getTime(const std::string&) override;
  bool getTime(const std::string&, int&, int&, int&) override;
  int getTimeVal() override;
  int getDisplayTimeVal() override;
  bool setTime(int, int, int) override;
  void setTime(int) override;
  std::string getDate() override;
  std::string getDateShort() override;
  void getDate(int&, int&, int&) override;
  std::string getDate(const std::string&) override;
  std::string getDateShort(const std::string&) override;
  bool getDate(const std::string&, int&, int&, int&) override;
  bool setDate(int, int, int) override;
  std::string getUTCTime(int) override;
  std::string getUTCTime(int, int, int, int, int, int) override;
  std::string convertUtcStringToLocalString(const std::string&) override;
  bool observeTimeEvents(ClockServiceObserverIfc*) override;
  bool unobserveTimeEvents(ClockServiceObserverIfc*) override;
  std::string setFallbackTime() override;
  bool isTimeSourceSntp() override;
  int setAlarmClock(std::string&, ClockServiceObserverIfc*) override;
  bool cancelAlarmClock(int) override;
};

struct ClockServiceObserverIfcProbe : First, ClockServiceObserverIfc {
  void timezoneChangeEvent(std::string) override;
  void timeChangeEvent(int, int, int) override;
  void dateChangeEvent(int, int, int) override;
  void alarmClockEvent(int) override;
};

struct ClockServiceObserverProxyProbe : First, ClockServiceObserverProxy {
  ~ClockServiceObserverProxyProbe() override;
  void init(Context&) override;
  void shutdown() override;
  void timerEvent(int) override;
  void initProxy(ProxyRequest&) override;
  void timezoneChangeEvent(std::string) override;
  void timeChangeEvent(int, int, int) override;
  void dateChangeEvent(int, int, int) override;
  void alarmClockEvent(int) override;
};
