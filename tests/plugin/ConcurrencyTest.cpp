// Everybody at once: management, device values, remote queries, NTP reports, jacks and timers.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "ClockServiceObserverIfc.h"
#include "plugin/Telephone.h"
#include "support/Sanitizers.h"

namespace {

constexpr std::chrono::seconds kDuration{support::kThreadSanitizer ? 30 : 2};

struct Setting {
  const char* key;
  std::vector<std::string> values;
};

const std::vector<Setting>& settings() {
  static const std::vector<Setting> rows{
      {"date-format", {"0", "1", "2"}},
      {"time-format", {"0", "1"}},
      {"sntp-addr", {"192.0.2.1", "192.0.2.2", "time.invalid", "0.0.0.0"}},
      {"ntp-secret", {"short", std::string(200, 's')}},
      {"sntp-tz-offset", {"-5", "5.5", "1", "0"}},
      {"daylight-save", {"true", "false"}},
      {"daylight-save-minutes", {"60", "30"}},
      {"time-source", {"0", "1"}},
      {"daylight-save-zone-id", {"9", "12", "5", "0"}},
      {"auto-daylight-save", {"true", "false"}},
  };
  return rows;
}

class CountingObserver final : public ClockServiceObserverIfc {
 public:
  void timezoneChangeEvent(std::string tz) override { events += tz.size() < 50 ? 1 : 0; }
  void timeChangeEvent(int hours, int, int) override { events += hours < 24 ? 1 : 0; }
  void dateChangeEvent(int day, int, int) override { events += day > 0 ? 1 : 0; }
  void alarmClockEvent(int) override {}
  std::atomic<int> events{0};
};

class ClockWithManyCallers : public testing::Test {
 protected:
  ClockWithManyCallers() { telephone.switchOn(); }

  // Runs `step` with 0, 1, 2 ... on a thread of its own, until the time is over.
  void caller(std::function<void(std::size_t)> step) {
    m_callers.emplace_back([this, step = std::move(step)] {
      for (std::size_t i = 0; !m_over; ++i) step(i);
    });
  }

  void runForAWhile(const std::function<void(std::size_t)>& frameworkStep) {
    const auto end = std::chrono::steady_clock::now() + kDuration;
    for (std::size_t i = 0; std::chrono::steady_clock::now() < end; ++i) frameworkStep(i);
    m_over = true;
    for (std::thread& thread : m_callers) thread.join();
  }

  void setter(std::size_t first) {
    caller([this, first](std::size_t i) {
      const Setting& setting = settings()[(first + i) % settings().size()];
      telephone.manage(setting.key, setting.values[i % setting.values.size()]);
    });
  }

  plugin::Telephone telephone;
  CountingObserver observer;

 private:
  std::atomic<bool> m_over{false};
  std::vector<std::thread> m_callers;
};

TEST_F(ClockWithManyCallers, EndsWithOneOfTheValuesWrittenForEachKey) {
  ClockService& service = telephone.service();
  setter(0);
  setter(5);
  caller([&](std::size_t i) { telephone.managed(settings()[i % settings().size()].key); });
  caller([&](std::size_t i) { telephone.managed(i % 2 == 0 ? "time" : "simple-date"); });
  caller([&](std::size_t i) {
    telephone.management.setValue("interface-status", i % 2 == 0 ? "up" : "down");
    telephone.management.setValue("mobility-user-data-update", "all");
    telephone.management.setValue("dhcp-enabled", "true");
  });
  caller([&](std::size_t) {
    EXPECT_TRUE(service.observeTimeEvents(&observer));
    EXPECT_FALSE(service.getTime("2026-07-01T12:00:00+00:00").empty());
    EXPECT_EQ(service.setFallbackTime().size(), 25U);
    EXPECT_TRUE(service.unobserveTimeEvents(&observer));
  });
  caller([&](std::size_t i) { service.handleSNTPClientUpdate(static_cast<long>(i) + 1); });
  caller([&](std::size_t i) {
    service.isTimeSourceSntp();
    service.getUTCTime(static_cast<int>(i));
    service.getTime();
    service.getDate();
  });
  runForAWhile([&](std::size_t i) {
    telephone.pass(std::chrono::minutes{7});
    if (i % 16 == 0) telephone.physical.jack(5, 1);
  });

  for (const Setting& setting : settings()) {
    const std::string value = telephone.managed(setting.key);
    EXPECT_NE(std::find(setting.values.begin(), setting.values.end(), value), setting.values.end())
        << setting.key << " is " << value;
  }
  EXPECT_GT(observer.events, 0);
}

}  // namespace
