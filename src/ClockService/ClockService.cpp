#include "ClockService.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "BoundaryDelay.h"
#include "ClockServiceDataHandler.h"
#include "ClockUtils.h"
#include "Context.h"
#include "DSTZoneRules.h"
#include "LocalMgmtIfc.h"
#include "Log.h"
#include "ManagementKeyNames.h"
#include "ManagementRecords.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Process.h"
#include "SemaphoreGuard.h"
#include "SystemClock.h"

namespace {

constexpr const char* kManagementAgentId = "ClockMgmtId";

// Keys of other components that the clock observes, in the order of registration.
constexpr std::array<const char*, 3> kObservedKeys{ManagementKeyNames::kMobilityUserDataUpdate,
                                                   ManagementKeyNames::kInterfaceStatus,
                                                   ManagementKeyNames::kDhcpEnabled};

// The service `name` as the interface Ifc, or null when it is absent or of another type.
template <typename Ifc>
Ifc* findService(Context& context, const char* name) {
  return dynamic_cast<Ifc*>(context.getService(name));
}

std::string savedTime(const ClockServiceDataHandler& settings) {
  const SemaphoreGuard texts(settings.textLock);
  return settings.getFallbackTime();
}

}  // namespace

extern "C" Service* createClockService() {
  return new ClockService;
}

ClockService::ClockService()
    : m_observers(std::make_unique<std::vector<ClockServiceObserverIfc*>>()) {}

// The listener must stop calling first: an update under way still uses the timers and all that is
// destroyed below. Its thread ends last, with the member.
ClockService::~ClockService() {
  m_sntpClientThread.releaseObserver();
  deleteTimers();
  m_dataHandler.reset();
  m_dstZoneRules.reset();
  m_observers.reset();
  m_ntpClientProcess.reset();
}

void ClockService::deleteTimers() {
  if (m_context == nullptr) return;
  for (const int timer :
       {m_fallbackTimeUpdateTimer.load(), m_timeZoneRefreshTimer.load(), m_timeChangedTimer.load(),
        m_dateChangedTimer.load(), m_timeSyncTimer.load(), m_dateSyncTimer.load(),
        m_restartNtpClientTimer.load()})
    if (timer > 0) m_context->deleteTimer(timer);
}

void ClockService::init(Context& context) {
  initWith(&context);
}

void ClockService::initWith(Context* context) {
  m_context = context;
  m_dstZoneRules = std::make_unique<DSTZoneRules>();
  physicalIfcSvc();
  if (m_context != nullptr) {
    openSettings();
    setClockFromFallbackTime();
    startFallbackTimer();
    attachLocalManagement();
    createNotificationTimers();
  } else {
    CLOCK_LOG(logError, "Serious error, no svcRteCntxt available");
  }
  const time_t started = getTimeValInternal();
  setTimeSyncTimer();
  setDateSyncTimer();
  setTZValue();
  // `started` was read before the timers were armed, so a midnight in between is still announced.
  m_announcedDate = BoundaryDelay::localDay(started);
  subscribeToJacks();
  if (m_networkUp) startNTPClient();
  m_sntpClientThread.start();
}

PhysicalInterfaceServiceIfc* ClockService::physicalIfcSvc() {
  if (m_physicalIfc != nullptr || m_context == nullptr) return m_physicalIfc;
  m_physicalIfc =
      findService<PhysicalInterfaceServiceIfc>(*m_context, "PhysicalInterfaceServiceIfc");
  if (m_physicalIfc == nullptr) CLOCK_LOG(logError, "Cannot find PhysicalInterfaceServiceIfc\n");
  return m_physicalIfc;
}

void ClockService::openSettings() {
  PhysicalInterfaceServiceIfc* const physicalIfc = m_physicalIfc;
  const auto subVariant =
      physicalIfc != nullptr ? physicalIfc->getHardwareSubVariant() : PhysDefs::subVariantUnknown;
  m_dataHandler = std::make_unique<ClockServiceDataHandler>(*m_context, subVariant);
}

// A text that is not a UTC string does not set the system clock; a zeroed record would be in 1899.
void ClockService::setClockFromFallbackTime() {
  restoreFallbackTime();
  const std::string fallbackTime = savedTime(*m_dataHandler);
  CLOCK_LOG(logInformation, "init: initial FallbackTime is \"%s\"", fallbackTime.c_str());
  tm utc{};
  if (!ClockUtils::convertTimeStringToTimeStruct(fallbackTime, utc)) {
    CLOCK_LOG(logError, "init: FallbackTime \"%s\" is not a UTC string", fallbackTime.c_str());
    return;
  }
  const time_t seconds = timegm(&utc);
  stime(&seconds);
}

void ClockService::startFallbackTimer() {
  constexpr unsigned int kTwelveHours = 43200000;
  m_fallbackTimeUpdateTimer = createTimer(kTwelveHours);
  startTimer(m_fallbackTimeUpdateTimer);
}

void ClockService::attachLocalManagement() {
  m_localMgmt = findService<LocalMgmtIfc>(*m_context, "LocalMgmtIfc");
  if (m_localMgmt == nullptr) return;
  m_localMgmt->registerAgent(kManagementAgentId, this);
  readSoftwareType();
  readNetworkState();
  setDalvoObservables();
  logStartUpUtc();
  showWhoSetsTime(m_localMgmt, sntpAddress());
}

void ClockService::readSoftwareType() {
  if (const auto type = readManagementValue(*m_localMgmt, ManagementKeyNames::kRelatedSoftwareType))
    m_dataHandler->setSoftwareType(*type);
}

void ClockService::readNetworkState() {
  if (const auto status = readManagementValue(*m_localMgmt, ManagementKeyNames::kInterfaceStatus))
    m_networkUp = *status == "up";
}

void ClockService::setDalvoObservables() {
  if (m_localMgmt == nullptr) return;
  for (const char* const key : kObservedKeys) m_localMgmt->observeData(key, this);
}

void ClockService::createNotificationTimers() {
  constexpr unsigned int kAtOnce = 1;
  m_timeChangedTimer = createTimer(kAtOnce);
  m_dateChangedTimer = createTimer(kAtOnce);
  m_timeZoneRefreshTimer = createTimer(kAtOnce);
}

void ClockService::subscribeToJacks() {
  PhysicalInterfaceServiceIfc* const physicalIfc = m_physicalIfc;
  if (physicalIfc == nullptr) return;
  constexpr PhysDefs::KeyGrpOther kJacks{1, 2, 2};
  physicalIfc->subscribe(this, {PhysDefs::SubscriptionGrp{kJacks}});
}

bool ClockService::observeTimeEvents(ClockServiceObserverIfc* observer) {
  if (observer == nullptr) return false;
  const SemaphoreGuard guard(m_observerLock);
  m_observers->push_back(observer);
  return true;
}

bool ClockService::unobserveTimeEvents(ClockServiceObserverIfc* observer) {
  const SemaphoreGuard guard(m_observerLock);
  const auto entry = std::find(m_observers->begin(), m_observers->end(), observer);
  if (entry == m_observers->end()) return false;
  m_observers->erase(entry);
  return true;
}

// Timers, management calls, jack events and the listener drive all work.
void ClockService::run() {}
void ClockService::shutdown() {}
void ClockService::hookswitchEvent(PhysDefs::actionType /*action*/) {}
void ClockService::getSubscribingService() {}

// Alarms are declared so that peers can be built against them; they are not implemented.
int ClockService::setAlarmClock(std::string& /*alarmTime*/, ClockServiceObserverIfc* /*observer*/) {
  return 0;
}
bool ClockService::cancelAlarmClock(int /*alarmId*/) {
  return false;
}
