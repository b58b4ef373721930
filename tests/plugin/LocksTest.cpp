// What the locks serialise: management calls, writes of text settings, replacements of the NTP
// client, and changes of the observers with notifications.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Process.h"
#include "plugin/ClockOnWatchedTimers.h"
#include "support/ManagedData.h"
#include "support/WaitingCall.h"

namespace {

std::function<void()> g_onLaunch;
std::function<void()> g_onSetenv;

}  // namespace

// The linker replaces Process::launch, whose mangled name this is, and setenv.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real__ZN7Process6launchEv(Process* process);
int __wrap__ZN7Process6launchEv(Process* process);
int __real_setenv(const char* name, const char* value, int overwrite);
int __wrap_setenv(const char* name, const char* value, int overwrite);

int __wrap__ZN7Process6launchEv(Process* process) {
  const int result = __real__ZN7Process6launchEv(process);
  if (g_onLaunch) g_onLaunch();
  return result;
}

int __wrap_setenv(const char* name, const char* value, int overwrite) {
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
