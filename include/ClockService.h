#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ClockServiceIfc.h"
#include "MgmtAgentIfc.h"
#include "SNTPTimeChangeObserver.h"
#include "Semaphore.h"
#include "Service.h"
#include "ThreadSafety.h"
#include "physicalEventObserver.h"

class ClockServiceDataHandler;
class DSTZoneRules;
class LocalMgmtIfc;
class ManagedKeys;
class PhysicalInterfaceServiceIfc;
class Process;
class SecurityLogServiceIfc;

// The telephone's clock: the one object of the plug-in.
// Owner: the framework. Thread: init, timer and jack events and destruction on the framework
// thread; management calls on the management thread; NTP reports on the listener thread; queries
// on any thread.
// Failure: by result, with an application log line under "ClockService". When a service of the
// device is missing, the clock runs without what that service provides.
class ClockService : public Service,
                     public ClockServiceIfc,
                     public MgmtAgentIfc,
                     public physicalEventObserver,
                     public SNTPTimeChangeObserver {
 public:
  ClockService();
  ~ClockService() override;

  // Service
  void init(Context& context) override;
  void shutdown() override;
  void timerEvent(int timerId) override;
  void run() override;

  // The whole of init. A null context leaves a clock without settings and timers.
  void initWith(Context* context);

  // ClockServiceIfc
  std::string getTime() override;
  void getTime(int& hours, int& minutes, int& seconds) override;
  std::string getTime(const std::string& utc) override;
  bool getTime(const std::string& utc, int& hours, int& minutes, int& seconds) override;
  int getTimeVal() override;
  int getDisplayTimeVal() override;
  bool setTime(int hours, int minutes, int seconds) override;
  void setTime(int secondsSinceEpoch) override;
  std::string getDate() override;
  std::string getDateShort() override;
  void getDate(int& day, int& month, int& year) override;
  std::string getDate(const std::string& utc) override;
  std::string getDateShort(const std::string& utc) override;
  bool getDate(const std::string& utc, int& day, int& month, int& year) override;
  bool setDate(int day, int month, int year) override;
  std::string getUTCTime(int secondsSinceEpoch) override;
  std::string getUTCTime(int hours, int minutes, int seconds, int day, int month,
                         int year) override;
  std::string convertUtcStringToLocalString(const std::string& utc) override;
  bool observeTimeEvents(ClockServiceObserverIfc* observer) override;
  bool unobserveTimeEvents(ClockServiceObserverIfc* observer) override;
  std::string setFallbackTime() override;
  bool isTimeSourceSntp() override;
  int setAlarmClock(std::string& alarmTime, ClockServiceObserverIfc* observer) override;
  bool cancelAlarmClock(int alarmId) override;

  // MgmtAgentIfc: the sixteen management keys, see ManagedKeys.h
  bool setData(ManageableData& record) override;
  bool getData(ManageableData& record) override;
  void manageableDataChanged(ManageableData& record) override;
  bool resetUserData() override;

  // physicalEventObserver
  void hookswitchEvent(PhysDefs::actionType action) override;
  void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) override;
  void getSubscribingService() override;

  // SNTPTimeChangeObserver
  void handleSNTPClientUpdate(long secondsSinceEpoch) override;

  // Ends the running NTP client, if there is one, and starts another. Does nothing while the
  // network is down, no server is configured or its name has no address. Thread: any.
  void startNTPClient();

  // The configured time server; empty without settings. Thread: any.
  std::string sntpAddress() const;

  // 1 ms later, on the framework thread: computes TZ from the settings and announces it.
  void startTimeZoneRefresh();

  // The physical-interface service, or null. Looks for it until it is found.
  PhysicalInterfaceServiceIfc* physicalIfcSvc();

 private:
  // Start-up: the steps of initWith
  void openSettings();
  void setClockFromFallbackTime();
  void startFallbackTimer();
  void attachLocalManagement();
  void readSoftwareType();
  void readNetworkState();
  void setDalvoObservables();
  void createNotificationTimers();
  void subscribeToJacks();
  void deleteTimers();

  // What time is it
  time_t getTimeValInternal() const;
  std::int32_t getUptime() const;
  std::int32_t getUserTime() const;
  void getTimeInternal(int& hours, int& minutes, int& seconds) const;
  bool timezoneEnabled() const;
  int dateFormat() const;
  int timeFormat() const;
  bool localTimeOf(const std::string& utc, tm& local) const;

  // Setting the clock and keeping it over a restart
  time_t setDateInternal(int day, int month, int year) const;
  time_t setTimeInternal(int hours, int minutes, int seconds) const;
  void setByHand(time_t secondsSinceEpoch);
  void restoreFallbackTime();
  void logStartUpUtc();
  std::string systemTime();
  std::string storeSystemTime();

  // Local time zone
  void setTZValue();
  void installTZ(const char* tz);
  void writeTZEnvironmentScript(char* tz);

  // Timers and notifications
  int createTimer(unsigned int milliseconds);
  void startTimer(int timerId);
  void stopTimer(int timerId);
  void dropTimer(int timerId);
  void startNewTimer(std::atomic<int>& timer, unsigned int milliseconds);
  void setTimeSyncTimer();
  void setDateSyncTimer();
  void refreshFallbackTime();
  void refreshTimeZone();
  void announceSetTime();
  void announceSetDate();
  void stepHour(int expiredTimer, int stoppedTimer);
  void stepDay(int stoppedTimer);
  void announceMissedDate();
  void notifyTimeChangeEvent();
  void notifyDateChangeEvent();
  enum class Announce { always, whenNew };
  void announceDate(Announce when);
  void notifyTimezoneChangeEvent(const std::string& tz);

  // NTP client
  void replaceNtpClient(char* const* commandLine);
  void setRestartNTPClientTimer();
  void seedRandomGenerator();
  int convertLastDigitsOfMacAddressToInt(const char* text);
  void sntpTimeChanged();
  void announceFirstNtpTime();
  void networkChanged(const std::string& status);

  // Management access
  std::optional<ManagedKeys> managedKeys();
  void recordManagementSet(const std::string& key, const std::string& value, bool accepted);

  Context* m_context = nullptr;

  // Management access, one call at a time. Held across the store write, so that no two sets mix
  // memory and store.
  Semaphore m_mgmtLock{1, 1};
  Semaphore m_observerLock{1, 1};    // m_observers; held while observers are called
  Semaphore m_ntpProcessLock{1, 1};  // m_ntpClientProcess

  // Set once, from init or on first use; any thread reads them.
  LocalMgmtIfc* m_localMgmt = nullptr;
  std::atomic<PhysicalInterfaceServiceIfc*> m_physicalIfc{nullptr};
  std::unique_ptr<ClockServiceDataHandler> m_dataHandler;
  std::unique_ptr<DSTZoneRules> m_dstZoneRules;

  std::unique_ptr<std::vector<ClockServiceObserverIfc*>> m_observers  // in registration order
      CLOCK_POINTEE_GUARDED_BY(m_observerLock);
  std::unique_ptr<Process> m_ntpClientProcess CLOCK_GUARDED_BY(m_ntpProcessLock);
  std::atomic<bool> m_ntpClientRequested{false};

  // Timer ids, valid when positive. Created on the framework thread, started from any.
  std::atomic<int> m_fallbackTimeUpdateTimer{};
  std::atomic<int> m_timeZoneRefreshTimer{};
  std::atomic<int> m_timeChangedTimer{};
  std::atomic<int> m_dateChangedTimer{};
  std::atomic<int> m_timeSyncTimer{};
  std::atomic<int> m_dateSyncTimer{};
  std::atomic<int> m_restartNtpClientTimer{};

  std::atomic<bool> m_networkUp{false};
  std::atomic<bool> m_sntpTimeReceived{false};
  int m_randomSeeded = 0;              // framework thread
  bool m_updateFallbackOnSntp = true;  // an NTP report also saves the time

  // The clock as set by hand: epoch seconds minus uptime seconds. The offset is written first and
  // the flag second, without a lock; a reader in between still sees the system's time.
  std::atomic<bool> m_userTimeSet{false};
  std::atomic<std::int32_t> m_userTimeOffset{};
  std::atomic<std::int32_t> m_localOffsetMinutes{0};  // from UTC to the display of a UTC string
  std::atomic<SecurityLogServiceIfc*> m_securityLog{nullptr};

  // The local date last sent to the observers, as BoundaryDelay::localDay; at start, the local date
  // during init in the zone that it installs. Any thread sends it, under m_observerLock.
  std::atomic<int> m_announcedDate{};
  std::atomic<bool> m_setDatePending{false};  // m_dateChangedTimer will announce a date

  // The process's environment: it holds TZ, and the NTP client gets a copy of it.
  Semaphore m_environmentLock{1, 1};

  SNTPClientThread m_sntpClientThread{this};
};

extern "C" __attribute__((visibility("default"))) Service* createClockService();
