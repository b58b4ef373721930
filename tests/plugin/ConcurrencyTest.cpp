// Concurrent callers: management, device values, remote calls, NTP reports, jacks and timers.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ClockServiceObserverIfc.h"
#include "support/RemotePeer.h"
#include "support/Sanitizers.h"
#include "support/Telephone.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Longest under the thread sanitizer, which finds most.
constexpr seconds kWhile{support::kThreadSanitizer ? 30 : 2};
constexpr seconds kShortWhile{support::kThreadSanitizer ? 10 : 1};

using Texts = std::vector<std::string>;

bool isOneOf(const Texts& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

struct Setting {
  const char* key;
  Texts values;
};

const std::vector<Setting>& settings() {
  static const std::vector<Setting> rows{
      {"date-format", {"0", "1", "2"}},
      {"time-format", {"0", "1"}},
      {"sntp-addr", {"192.0.2.1", "192.0.2.2", "2001:db8::1", "0.0.0.0"}},
      {"ntp-secret", {"short", std::string(200, 's')}},
      {"sntp-tz-offset", {"-5", "5.5", "1", "0"}},
      {"daylight-save", {"true", "false"}},
      {"daylight-save-minutes", {"60", "30"}},
      {"time-source", {"0", "1"}},
      {"daylight-save-zone-index", {"9", "12", "5", "0"}},
      {"daylight-save-zone-id", {"9", "12", "5", "0"}},
      {"auto-daylight-save", {"true", "false"}},
  };
  return rows;
}

// Keys and calls that set the clock by hand. With date format 0, they only set dates and times of
// the lists below.
const std::vector<Setting>& handSettings() {
  static const std::vector<Setting> rows{
      {"time", {"2026-03-08T06:59:50+00:00", "2027-12-31T23:59:59+00:00"}},
      {"simple-time", {"07:30", "18:45"}},
      {"simple-date", {"05.03.2025", "29.02.2024"}},
  };
  return rows;
}

const Texts& handCalls() {
  static const Texts calls{
      "call setTime\nin int setTimeHours=14\nin int setTimeMinutes=15\nin int setTimeSeconds=16\n",
      "call setDate\nin int setDateDay=1\nin int setDateMonth=2\nin int setDateYear=2030\n",
      "call setTimeInt\nin int setTime=1000000000\n"};
  return calls;
}

const Texts kDates{"2016-06-16", "2026-03-08", "2027-12-31", "2025-03-05",
                   "2024-02-29", "2030-02-01", "2001-09-09"};
const Texts kTimes{"00:00:00", "06:59:50", "23:59:59", "07:30:00",
                   "18:45:00", "14:15:16", "01:46:40"};

constexpr const char* kUtcQuery =
    "call getTimeUTCStr\nin string getTimeUTCStrString=2026-07-01T12:00:00+00:00\n";

const Texts& queries() {
  static const Texts calls{"call observeTimeEvents\n", "call getTime\n",
                           "call getDateInts\n",       kUtcQuery,
                           "call setFallbackTime\n",   "call isTimeSourceSntp\n",
                           "call getDisplayTimeVal\n", "call unobserveTimeEvents\n"};
  return calls;
}

class CountingObserver final : public ClockServiceObserverIfc {
 public:
  void timezoneChangeEvent(std::string tz) override { events += tz.size() < 50 ? 1 : 0; }
  void timeChangeEvent(int hours, int, int) override { events += hours < 24 ? 1 : 0; }
  void dateChangeEvent(int day, int, int) override { events += day > 0 ? 1 : 0; }
  void alarmClockEvent(int) override {}
  std::atomic<int> events{0};
};

// A clock on 16 June 2016, 00:00, with a thread for each caller.
class ClockWithManyCallers : public testing::Test {
 protected:
  ClockWithManyCallers() {
    telephone.switchOn();
    peer.emplace();
    peer->onEvent = [this](const Method&) { ++peersEvents; };
  }

  // Runs `step` with 0, 1, 2 ... on a new thread until runFor ends.
  void caller(std::function<void(std::size_t)> step) {
    m_callers.emplace_back([this, step = std::move(step)] {
      for (std::size_t i = 0; !m_over; ++i) step(i);
    });
  }

  void runFor(seconds duration, const std::function<void(std::size_t)>& frameworkStep) {
    const auto end = std::chrono::steady_clock::now() + duration;
    for (std::size_t i = 0; std::chrono::steady_clock::now() < end; ++i) frameworkStep(i);
    m_over = true;
    for (std::thread& thread : m_callers) thread.join();
  }

  void setter(const std::vector<Setting>& rows, std::size_t first) {
    caller([this, &rows, first](std::size_t i) {
      const Setting& setting = rows[(first + i) % rows.size()];
      telephone.manage(setting.key, setting.values[i / rows.size() % setting.values.size()]);
    });
  }
  void getter(const std::vector<Setting>& rows) {
    caller([this, &rows](std::size_t i) { telephone.managed(rows[i % rows.size()].key); });
  }
  // In whole rounds, so that each observer is unregistered at the end.
  void peerCalling(const Texts& calls) {
    caller([this, &calls](std::size_t) {
      for (const std::string& call : calls) peer->call(&telephone.service(), call);
    });
  }
  void observerComingAndGoing() {
    caller([this](std::size_t i) {
      ClockService& service = telephone.service();
      EXPECT_TRUE(service.observeTimeEvents(&observer));
      service.handleSNTPClientUpdate(static_cast<long>(i) + 1);
      EXPECT_EQ(service.setFallbackTime().size(), 25U);
      EXPECT_TRUE(service.unobserveTimeEvents(&observer));
    });
  }
  void deviceChanging() {
    caller([this](std::size_t i) {
      telephone.management.setValue("interface-status", i % 2 == 0 ? "up" : "down");
      telephone.management.setValue("mobility-user-data-update", "all");
      telephone.management.setValue("dhcp-enabled", "true");
      static_cast<void>(telephone.management.reset());
    });
  }

  support::Telephone telephone;
  std::optional<support::RemotePeer> peer;
  std::atomic<int> peersEvents{0};
  CountingObserver observer;

 private:
  std::atomic<bool> m_over{false};
  std::vector<std::thread> m_callers;
};

TEST_F(ClockWithManyCallers, EndsWithOneOfTheValuesWrittenForEachKey) {
  setter(settings(), 0);
  setter(settings(), 5);
  setter(handSettings(), 0);
  getter(settings());
  peerCalling(handCalls());
  peerCalling(queries());
  observerComingAndGoing();
  deviceChanging();
  runFor(kWhile, [&](std::size_t i) {
    telephone.pass(std::chrono::minutes{7});
    if (i % 16 == 0) telephone.physical.jack(5, 1);
  });
  for (const Setting& setting : settings()) {
    const std::string value = telephone.managed(setting.key);
    EXPECT_TRUE(isOneOf(setting.values, value)) << setting.key << " is " << value;
  }
  EXPECT_GT(observer.events, 0);
  EXPECT_GT(peersEvents, 0);
}

// No thread stores a time over a later one of another thread.
TEST_F(ClockWithManyCallers, SavedTimeDoesNotGoBack) {
  for (int i = 0; i < 3; ++i) {
    caller([this](std::size_t) { static_cast<void>(telephone.service().setFallbackTime()); });
  }
  std::int64_t now = telephone.wallSeconds();
  std::string last;
  int wentBack = 0;
  runFor(kShortWhile, [&](std::size_t) {
    telephone.jumpTo(++now);
    last = telephone.service().setFallbackTime();
    if (telephone.stored("FallbackDateTime") < last) ++wentBack;
  });
  EXPECT_EQ(wentBack, 0) << "until " << last;
}

// Less than a second passes, so that the clock still shows what was set.
TEST_F(ClockWithManyCallers, EndsAtOneOfTheTimesAndDatesWritten) {
  setter(handSettings(), 0);
  setter(handSettings(), 1);
  setter(handSettings(), 2);
  getter(handSettings());
  peerCalling(handCalls());
  peerCalling(handCalls());
  peerCalling(queries());
  observerComingAndGoing();
  const auto end = telephone.clock.uptime() + milliseconds{900};
  runFor(kShortWhile, [&](std::size_t i) {
    if (i % 1000 == 0 && telephone.clock.uptime() < end) telephone.pass(milliseconds{1});
  });
  const std::string time = telephone.managed("time");
  ASSERT_EQ(time.size(), 25U);
  EXPECT_TRUE(isOneOf(kDates, time.substr(0, 10))) << time;
  EXPECT_TRUE(isOneOf(kTimes, time.substr(11, 8))) << time;
  EXPECT_GT(peersEvents, 0);
}

}  // namespace
