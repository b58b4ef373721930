// What the locks serialise: management calls, writes of text settings, replacements of the NTP
// client, and changes of the observers with notifications.

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Process.h"
#include "plugin/ClockOnWatchedTimers.h"
#include "support/ManagedData.h"
#include "support/WaitingCall.h"

namespace {

std::function<void()> g_onLaunch;
std::function<void()> g_onSetenv;
std::vector<std::string> g_steps;     // of the NTP clients' processes and of the destruction
std::optional<int> g_launchResult{};  // instead of a launch

}  // namespace

// The linker replaces these functions of Process, DataStorage and Threader, whose mangled names
// these are, and setenv. On ARM a constructor and a destructor return the object.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real__ZN7Process6launchEv(Process* process);
int __wrap__ZN7Process6launchEv(Process* process);
void* __real__ZN7ProcessC1EiPKPcS2_PKc(void*, int, char* const*, char* const*, const char*);
void* __wrap__ZN7ProcessC1EiPKPcS2_PKc(void*, int, char* const*, char* const*, const char*);
void* __real__ZN7ProcessD1Ev(void* process);
void* __wrap__ZN7ProcessD1Ev(void* process);
void* __real__ZN11DataStorageD1Ev(void* storage);
void* __wrap__ZN11DataStorageD1Ev(void* storage);
void __real__ZN8Threader23waitForThreadCompletionEm(void* threader, unsigned long id);
void __wrap__ZN8Threader23waitForThreadCompletionEm(void* threader, unsigned long id);
int __real_setenv(const char* name, const char* value, int overwrite);
int __wrap_setenv(const char* name, const char* value, int overwrite);

int __wrap__ZN7Process6launchEv(Process* process) {
  g_steps.emplace_back("launch");
  const int result = g_launchResult ? *g_launchResult : __real__ZN7Process6launchEv(process);
  if (g_onLaunch) g_onLaunch();
  return result;
}

void* __wrap__ZN7ProcessC1EiPKPcS2_PKc(void* process, int options, char* const* arguments,
                                       char* const* environment, const char* folder) {
  g_steps.emplace_back("create");
  return __real__ZN7ProcessC1EiPKPcS2_PKc(process, options, arguments, environment, folder);
}

void* __wrap__ZN7ProcessD1Ev(void* process) {
  g_steps.emplace_back("end");
  return __real__ZN7ProcessD1Ev(process);
}

void* __wrap__ZN11DataStorageD1Ev(void* storage) {
  g_steps.emplace_back("close store");
  return __real__ZN11DataStorageD1Ev(storage);
}

void __wrap__ZN8Threader23waitForThreadCompletionEm(void* threader, unsigned long id) {
  g_steps.emplace_back("await listener");
  __real__ZN8Threader23waitForThreadCompletionEm(threader, id);
}

int __wrap_setenv(const char* name, const char* value, int overwrite) {
  EXPECT_EQ(overwrite, 1);
  if (g_onSetenv) g_onSetenv();
  return __real_setenv(name, value, overwrite);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using plugin::kZoneRefresh;
using support::WaitingCall;

// A running clock, and calls of other threads while it is in the middle of an operation.
class ClockInTheMiddle : public plugin::ClockOnWatchedTimers {
 protected:
  ClockInTheMiddle() { start(); }

  // Makes the call on another thread, where it must wait until the operation is finished.
  void otherThread(const std::function<void()>& call) {
    m_calls.push_back(std::make_unique<WaitingCall>(call));
    EXPECT_TRUE(m_calls.back()->waits());
  }
  // Waits for all these calls, and returns their number.
  std::size_t finished() {
    const std::size_t count = m_calls.size();
    m_calls.clear();
    return count;
  }
  // Makes the call in the middle of a management call that starts the zone's timer.
  void whileTheZoneTimerStarts(const std::function<void()>& call) {
    timers.onCall = [this, call](const std::string& asked) {
      if (asked == "start " + std::to_string(kZoneRefresh)) otherThread(call);
    };
  }
  void set(const std::string& key, const std::string& value) { support::set(*service, key, value); }
  void networkUp() { support::announceChange(*service, "interface-status", "up"); }
  void plugIn() { service->jackEvent(PhysDefs::plugNetwork, PhysDefs::plugInserted); }

 private:
  std::vector<std::unique_ptr<WaitingCall>> m_calls;
};

TEST_F(ClockInTheMiddle, RegistersNoObserverDuringANotification) {
  support::Journal others;
  support::JournalObserver other(others);
  observer.onEvent = [&] { otherThread([&] { service->observeTimeEvents(&other); }); };
  service->timerEvent(kZoneRefresh);
  EXPECT_EQ(finished(), 3U);  // zone, time and date
}

TEST_F(ClockInTheMiddle, RemovesNoObserverDuringANotification) {
  support::Journal others;
  support::JournalObserver other(others);
  observer.onEvent = [&] { otherThread([&] { service->unobserveTimeEvents(&other); }); };
  service->timerEvent(kZoneRefresh);
  EXPECT_EQ(finished(), 3U);
}

// Server and fallback time are texts: a reader during a write would see half of one.
TEST_F(ClockInTheMiddle, WritesOneTextSettingAtATime) {
  const std::function<void()> calls[] = {[&] { service->setTime(1); },  // reads the server
                                         [&] { service->setFallbackTime(); },
                                         [&] { set("sntp-addr", "192.0.2.1"); }};
  for (const auto& call : calls) {
    bool first = true;
    store.onSet = [&](const std::string& /*key*/) {
      if (std::exchange(first, false)) otherThread(call);
    };
    service->setFallbackTime();
    EXPECT_EQ(finished(), 1U);
  }
  store.onSet = nullptr;
}

TEST_F(ClockInTheMiddle, ReplacesItsNtpClientInOneStep) {
  set("sntp-addr", "127.0.0.1");
  bool first = true;
  g_onLaunch = [&] {
    if (std::exchange(first, false)) otherThread([&] { plugIn(); });
  };
  networkUp();
  EXPECT_EQ(finished(), 1U);
  g_onLaunch = nullptr;
}

TEST_F(ClockInTheMiddle, EndsItsNtpClientBeforeItCreatesTheNext) {
  set("sntp-addr", "127.0.0.1");
  networkUp();
  g_steps.clear();
  plugIn();
  EXPECT_THAT(g_steps, testing::ElementsAre("end", "create", "launch"));
}

// The listener's thread ends only when its pipe is opened, so it is last.
TEST_F(ClockInTheMiddle, ClosesItsStoreAndEndsItsClientBeforeItAwaitsItsListener) {
  set("sntp-addr", "127.0.0.1");
  networkUp();
  g_steps.clear();
  end();
  EXPECT_THAT(g_steps, testing::ElementsAre("close store", "end", "await listener"));
}

TEST_F(ClockInTheMiddle, LogsAnNtpClientWithoutAProcessId) {
  set("sntp-addr", "127.0.0.1");
  for (const int result : {1, 0, -1}) {
    const support::LogCapture log(2);
    g_launchResult = result;
    networkUp();
    EXPECT_EQ(log.has(2, "ntpclient couldn't be started"), result <= 0) << result;
  }
  g_launchResult.reset();
}

// A new client gets a copy of the environment.
TEST_F(ClockInTheMiddle, StartsNoClientWhileItChangesTheEnvironment) {
  set("sntp-addr", "127.0.0.1");
  networkUp();
  g_onSetenv = [&] { otherThread([&] { plugIn(); }); };
  service->timerEvent(kZoneRefresh);
  g_onSetenv = nullptr;
  EXPECT_EQ(finished(), 1U);
}

TEST_F(ClockInTheMiddle, TakesOneManagementCallAtATime) {
  const std::function<void()> calls[] = {[&] { support::get(*service, "date-format"); },
                                         [&] { set("time-format", "1"); },
                                         [&] { support::announceChange(*service, "unknown", ""); }};
  for (const auto& call : calls) {
    whileTheZoneTimerStarts(call);
    EXPECT_TRUE(support::set(*service, "daylight-save", "true"));
    support::announceChange(*service, "dhcp-enabled", "true");
    EXPECT_EQ(finished(), 2U);
  }
}

}  // namespace
