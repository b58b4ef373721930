// Behaviour is defined for all settings and all times. The undefined-behaviour sanitizer reports
// what these tests cannot see.

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

#include "framework/StateFolder.h"
#include "support/Telephone.h"

namespace {

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

const char* const kOffsets[] = {"nan",        "-nan",  "inf",   "-inf",       "1e30",
                                "-1e30",      "1e99",  "1e-40", "35791394.2", "-35791394.2",
                                "2147483648", "12.75", "-0",    "0.016"};
const char* const kMinutes[] = {"-2147483648", "2147483647", "-99999999999999999999", "-60",
                                "1441"};

std::string tz() {
  const char* const value = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe)
  return value != nullptr ? value : "(none)";
}

// A telephone that is not switched on yet, and every question that its service answers.
class ClockWithAbsurdSettings : public testing::Test {
 protected:
  void askEverything() {
    ClockService& service = telephone.service();
    int a = 0, b = 0, c = 0;
    service.getTime(a, b, c);
    service.getDate(a, b, c);
    for (const char* const utc : {"0000-01-01T00:00:00+23:59", "9999-12-31T23:59:60-23:59",
                                  "2026-03-29T01:00:00+00:00", "", "nonsense"}) {
      service.getTime(utc, a, b, c);
      service.getDate(utc, a, b, c);
      answers += service.getTime(utc) + service.getDate(utc) + service.getDateShort(utc);
    }
    for (const int seconds : {kLowest, -1, 0, 1, kHighest}) answers += service.getUTCTime(seconds);
    for (const int field : {kLowest, -1, 0, kHighest})
      answers += service.getUTCTime(field, field, field, field, field, field);
    answers += service.getTime() + service.getDate() + service.getDateShort();
    answers += std::to_string(service.getTimeVal()) + std::to_string(service.getDisplayTimeVal());
    for (const char* const key : {"simple-time", "simple-date", "time", "sntp-tz-offset",
                                  "daylight-save-zone-index", "daylight-save-zone-text"})
      answers += telephone.managed(key);
  }

  void expectSaneZone() {
    EXPECT_LE(tz().size(), 49U);
    EXPECT_EQ(tz().find_first_not_of("LOCDSTM0123456789:+-.,/"), std::string::npos) << tz();
    EXPECT_EQ(tz().substr(0, 3), "LOC");
  }

  support::Telephone telephone;
  std::string answers;
};

// No setter would have stored these.
TEST_F(ClockWithAbsurdSettings, AnswersEveryQuestionUnderStoredSettings) {
  for (const char* const offset : kOffsets) {
    telephone.storeZone(offset, true, true, 9);
    for (const char* const key :
         {"DaylightSavingMinutes", "DateFormat", "TimeFormat", "QexTimeSource"})
      telephone.store(key, kMinutes[0]);
    telephone.switchOn();
    expectSaneZone();
    EXPECT_EQ(support::zoneScript(), "#!/bin/sh\n\nexport TZ=" + tz() + "\n\n") << offset;
    askEverything();
    telephone.switchOff();
  }
}

TEST_F(ClockWithAbsurdSettings, AnswersEveryQuestionUnderEveryCombination) {
  const std::string storage = host::storageFolder();
  host::setStorageFolder("");  // writing the scripts would take most of the time
  telephone.switchOn();
  for (const char* const offset : kOffsets) {
    for (const char* const minutes : kMinutes) {
      for (const char* const automatic : {"true", "false"}) {
        for (const char* const zone : {"0", "9", "14"}) {
          telephone.manage("sntp-tz-offset", offset);
          telephone.manage("daylight-save", "true");
          telephone.manage("daylight-save-minutes", minutes);
          telephone.manage("auto-daylight-save", automatic);
          telephone.changeZone("daylight-save-zone-id", zone);
          expectSaneZone();
          askEverything();
        }
      }
    }
  }
  host::setStorageFolder(storage);
}

TEST_F(ClockWithAbsurdSettings, RunsForDaysUnderEachOffset) {
  telephone.switchOn();
  for (const char* const offset : kOffsets) {
    telephone.changeZone("sntp-tz-offset", offset);
    const auto before = telephone.clock.expiriesDelivered();
    telephone.pass(std::chrono::hours{48});
    EXPECT_LE(telephone.clock.expiriesDelivered() - before, 3U * 50U) << offset;  // nothing loops
  }
}

TEST_F(ClockWithAbsurdSettings, TakesAbsurdTimesAndDates) {
  telephone.switchOn();
  ClockService& service = telephone.service();
  for (const int a : {kLowest, -1, 0, 60, kHighest}) {
    for (const int b : {kLowest, 0, kHighest}) {
      service.setTime(a, b, a);
      askEverything();
      service.setDate(a, b, 2000);
      service.setDate(b, a, kLowest);
      service.setDate(1, 1, kHighest);
      service.setTime(a);
      askEverything();
      telephone.pass(std::chrono::hours{2});
    }
  }
}

TEST_F(ClockWithAbsurdSettings, RunsAtTheLimitsOfTime) {
  telephone.switchOn();
  for (const std::int64_t seconds : {std::int64_t{0}, std::int64_t{kHighest},
                                     std::int64_t{kHighest} + 1, std::int64_t{8'000'000'000}}) {
    telephone.jumpTo(seconds);
    telephone.management.setValue("dhcp-enabled", "true");
    telephone.pass(std::chrono::hours{30});
    askEverything();
  }
}

}  // namespace
