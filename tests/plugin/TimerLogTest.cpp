// What each expiry logs, and between which calls and events.

#include <gmock/gmock.h>

#include "plugin/ClockOnWatchedTimers.h"
#include "support/LogCapture.h"

namespace {

using namespace plugin;
using testing::ElementsAre;
using testing::StartsWith;

// A clock that has started, and whose log lines stand between what it asks of the framework.
class ClockWithLoggedTimers : public ClockOnWatchedTimers {
 protected:
  ClockWithLoggedTimers() { start(); }

  const std::string now = "2030-06-15T22:10:05+00:00";
  const std::string stored = "store FallbackDateTime=" + now;
  const std::string saved = "6 setFallbackTime: \"" + now + "\"";
  const std::string armsHour = "5 setTimeSyncTimer -> setting timer";
  const std::string armsMidnight = "5 setTimeSyncTimer -> setting date timer";

 private:
  const support::LogCapture m_log{
      6, [this](const host::LogEntry& entry) {
        if (entry.text.rfind("getTimeInternal", 0) == 0 || entry.text.rfind("NTP", 0) == 0) return;
        journal.add(std::to_string(entry.level) + " " + entry.text);
      }};
};

TEST_F(ClockWithLoggedTimers, NamesTheSavedTimeBeforeTheTimerStartsAgain) {
  EXPECT_THAT(
      expire(kFallback),
      ElementsAre(stored, saved,
                  "5 timerEvent(m_fallbackTimeUpdateTimer): FallbackTime is \"" + now + "\"",
                  "stop 1", "start 1"));
}

TEST_F(ClockWithLoggedTimers, NamesTheSavedTimeAfterTheDateAndBeforeTheHourOfASetTime) {
  EXPECT_THAT(expire(kTimeChanged),
              ElementsAre(stored, saved, "date 15.06.2030",
                          "5 timerEvent(m_timeChangedTimer): FallbackTime is \"" + now + "\"",
                          "stop 2", "stop 5", "start 5", "time 22:10:05", armsHour, "cancel 5",
                          "delete 5", "create 2995000 -> 7", "start 7", armsMidnight, "cancel 6",
                          "delete 6", "create 6595000 -> 8", "start 8"));
}

TEST_F(ClockWithLoggedTimers, NamesTheSavedTimeBeforeTheDayOfASetDate) {
  EXPECT_THAT(
      expire(kDateChanged),
      ElementsAre(stored, saved, "5 timerEvent(m_dateChangedTimer) FallbackTime is \"" + now + "\"",
                  "stop 3", armsMidnight, "cancel 6", "delete 6", "create 6595000 -> 7", "start 7",
                  "date 15.06.2030"));
}

TEST_F(ClockWithLoggedTimers, SeedsThenDropsThenDrawsForARestart) {
  management.values["mac-addr"] = "0001E3A1B2C3";
  const auto first = expire(kHour);
  EXPECT_THAT(
      std::vector(first.begin() + 14, first.end()),
      ElementsAre("read mac-addr", "5 mac address is 0001E3A1B2C3", "5 seeding with 10597059",
                  StartsWith("5 rand delay 600 + "), StartsWith("create "), "start 9"));
  const auto second = expire(7);
  EXPECT_THAT(std::vector(second.begin() + 14, second.end()),
              ElementsAre("cancel 9", "delete 9", StartsWith("5 rand delay 600 + "),
                          StartsWith("create "), "start 12"));
}

TEST_F(ClockWithLoggedTimers, SaysFirstThatAReportIsHandledAndLastWhatWasSaved) {
  service->handleSNTPClientUpdate(1);
  EXPECT_THAT(journal.take(), ElementsAre("5 sntpTimeChanged: handling SNTP client update",
                                          "begin clock change", "time 22:10:05", "end clock change",
                                          "date 15.06.2030", "stop 1", "start 1", stored, saved,
                                          "5 sntpTimeChanged: FallbackTime is \"" + now + "\""));
}

}  // namespace
