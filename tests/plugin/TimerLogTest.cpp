// What each expiry logs, and between which calls and events.

#include <gmock/gmock.h>

#include <memory>

#include "framework/LogBook.h"
#include "plugin/ClockOnWatchedTimers.h"
#include "support/LogCapture.h"

namespace {

using namespace plugin;
using testing::ElementsAre;
using testing::StartsWith;

// Puts the clock's lines between what it asks of the framework.
class JournalLog final : public host::LogSink {
 public:
  explicit JournalLog(Journal& journal) : m_journal(journal) {}
  void write(const host::LogEntry& entry) override {
    if (entry.text.rfind("getTimeInternal", 0) == 0 || entry.text.rfind("NTP", 0) == 0) return;
    m_journal.add(std::to_string(entry.level) + " " + entry.text);
  }

 private:
  Journal& m_journal;
};

class ClockWithLoggedTimers : public ClockOnWatchedTimers {
 protected:
  ClockWithLoggedTimers() {
    start();
    host::LogBook::instance().addSink(m_log);
  }
  ~ClockWithLoggedTimers() override { host::LogBook::instance().removeSink(m_log); }
  ClockWithLoggedTimers(const ClockWithLoggedTimers&) = delete;
  ClockWithLoggedTimers& operator=(const ClockWithLoggedTimers&) = delete;

  const std::string now = "2030-06-15T22:10:05+00:00";
  const std::string stored = "store FallbackDateTime=" + now;
  const std::string saved = "6 setFallbackTime: \"" + now + "\"";
  const std::string armsHour = "5 setTimeSyncTimer -> setting timer";
  const std::string armsMidnight = "5 setTimeSyncTimer -> setting date timer";

 private:
  const support::LogCapture m_level{6};
  const std::shared_ptr<JournalLog> m_log = std::make_shared<JournalLog>(journal);
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
