// The display and the events from 1971 to 2037, compared with a second implementation of the rules.
// The display is compared for each zone and each offset: at every change, one second before and
// after it, and at random instants. Events take an hour of the service each, so they are compared
// for nine offsets: from three hours before each change to 25 hours after it, on random days, and
// in one zone in all years.

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "ClockServiceObserverIfc.h"
#include "framework/StateFolder.h"
#include "plugin/IndependentZones.h"
#include "support/Telephone.h"

namespace {

using independent::Choice;
using independent::Seconds;
using independent::secondsOf;
using independent::utcOf;
using independent::WallClock;

constexpr Seconds kHour = 3600;
constexpr Seconds kDay = 24 * kHour;
constexpr std::int64_t kFirstYear = 1971;
constexpr std::int64_t kLastYear = 2037;
constexpr int kRandomInstants = 60;
constexpr int kRandomDays = 20;

// Minutes east of UTC: both ends of the range, whole hours, halves and quarters on both sides.
const std::vector<int> kOffsets{-750, -660, -570, -480, -300, -270, -210, -180, -60,
                                -45,  -30,  -15,  0,    15,   30,   45,   60,   120,
                                180,  330,  345,  525,  570,  600,  630,  720,  750};
const std::vector<int> kEventOffsets{-750, -210, -30, 0, 15, 45, 60, 525, 750};

// One event and its instant. A time: hours, minutes, seconds; a date: day, month, year.
struct Event {
  Seconds instant;
  bool isDate;
  int a, b, c;
  bool operator==(const Event&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Event& event) {
  return stream << utcOf(event.instant) << (event.isDate ? " date " : " time ") << event.a << " "
                << event.b << " " << event.c;
}

class EventRecorder final : public ClockServiceObserverIfc {
 public:
  explicit EventRecorder(const support::Telephone& telephone) : m_telephone(telephone) {}
  void timezoneChangeEvent(std::string /*timezone*/) override {}
  void alarmClockEvent(int /*alarm*/) override {}
  void timeChangeEvent(int hours, int minutes, int seconds) override {
    events.push_back({m_telephone.wallSeconds(), false, hours, minutes, seconds});
  }
  void dateChangeEvent(int day, int month, int year) override {
    events.push_back({m_telephone.wallSeconds(), true, day, month, year});
  }
  std::vector<Event> events;

 private:
  const support::Telephone& m_telephone;
};

Event dateEvent(Seconds instant, std::int64_t day) {
  const auto date = independent::dateOf(day);
  return {instant, true, static_cast<int>(static_cast<unsigned int>(date.day())),
          static_cast<int>(static_cast<unsigned int>(date.month())), static_cast<int>(date.year())};
}

// The events after `from` and until `to` of a clock that armed its timers at `from`: the time at
// each local full hour, and the date with it if it is another one.
std::vector<Event> expectedEvents(const WallClock& wall, Seconds from, Seconds to) {
  std::vector<Event> events;
  std::int64_t latestDay = wall.localDay(from);
  for (Seconds hour = wall.nextHour(from); hour <= to; hour = wall.nextHour(hour)) {
    const std::int64_t day = wall.localDay(hour);
    const auto ofDay = static_cast<int>(wall.localAt(hour) - day * kDay);
    events.push_back({hour, false, ofDay / 3600, ofDay / 60 % 60, ofDay % 60});
    if (day != latestDay) events.push_back(dateEvent(hour, day));
    latestDay = day;
  }
  return events;
}

// How often the local date changes after `from` and until `to`.
std::ptrdiff_t dateChanges(const WallClock& wall, Seconds from, Seconds to) {
  constexpr Seconds kQuarter = 900;  // every midnight is at a quarter
  std::ptrdiff_t changes = 0;
  std::int64_t latest = wall.localDay(from);
  for (Seconds instant = from - from % kQuarter + kQuarter; instant <= to; instant += kQuarter)
    if (wall.localDay(instant) != latest) ++changes, latest = wall.localDay(instant);
  return changes;
}

std::string nameOf(const Choice& choice) {
  return "zone " + std::to_string(choice.zone) + " at " + std::to_string(choice.minutesEast) +
         (!choice.daylight   ? ", standard"
          : choice.automatic ? ", automatic"
                             : ", daylight saving all year") +
         " " + std::to_string(choice.shift);
}

// A running clock for one zone of the table, whose number is the parameter. It has no storage for
// its script, which would take most of the time.
class ClockOverACentury : public testing::TestWithParam<int> {
 protected:
  ClockOverACentury() : m_storage(host::storageFolder()) {
    host::setStorageFolder("");
    telephone.switchOn();
    telephone.changeZone("date-format", "1");
    telephone.service().observeTimeEvents(&recorder);
  }
  ~ClockOverACentury() override { host::setStorageFolder(m_storage); }
  ClockOverACentury(const ClockOverACentury&) = delete;
  ClockOverACentury& operator=(const ClockOverACentury&) = delete;

  // The settings of the choice are in force when it returns.
  void choose(const Choice& choice) {
    const auto flag = [](bool on) { return std::string(on ? "true" : "false"); };
    EXPECT_TRUE(telephone.manage("sntp-tz-offset", std::to_string(choice.minutesEast / 60.0)));
    EXPECT_TRUE(telephone.manage("daylight-save", flag(choice.daylight)));
    EXPECT_TRUE(telephone.manage("auto-daylight-save", flag(choice.automatic)));
    EXPECT_TRUE(telephone.manage("daylight-save-minutes", std::to_string(choice.shift)));
    EXPECT_TRUE(telephone.manage("daylight-save-zone-id", std::to_string(choice.zone)));
    telephone.pass(std::chrono::milliseconds{1});
  }

  // Between the first and the last year; the same sequence in each run.
  Seconds randomInstant() {
    static const Seconds first = secondsOf("1971-01-01T00:00:00");
    static const Seconds last = secondsOf("2037-12-30T23:59:59");
    return std::uniform_int_distribution<Seconds>(first, last)(m_random);
  }

  // Compares at each change and at random instants; stops at the first difference.
  using Comparison = std::function<bool(const WallClock& expected, Seconds instant)>;
  void compare(const Choice& choice, int randomInstants, const Comparison& agrees) {
    if (HasFailure()) return;
    SCOPED_TRACE(nameOf(choice));
    choose(choice);
    const WallClock expected(choice);
    for (std::int64_t year = kFirstYear; year <= kLastYear; ++year) {
      for (const Seconds change : expected.changesIn(year))
        if (!agrees(expected, change)) return;
    }
    for (int i = 0; i < randomInstants; ++i)
      if (!agrees(expected, randomInstant())) return;
  }

  void compareDisplay(const Choice& choice) {
    compare(choice, kRandomInstants, [this](const WallClock& expected, Seconds instant) {
      return displayAgrees(expected, instant - 1) && displayAgrees(expected, instant) &&
             displayAgrees(expected, instant + 1);
    });
  }
  void compareEvents(const Choice& choice) {
    compare(choice, kRandomDays, [this](const WallClock& expected, Seconds instant) {
      return eventsAgree(expected, instant - 3 * kHour, instant + 25 * kHour);
    });
  }

  bool displayAgrees(const WallClock& expected, Seconds instant) {
    telephone.jumpTo(instant);
    ClockService& service = telephone.service();
    const std::string face = expected.faceAt(instant);
    const std::string textFace = expected.faceForText(instant);
    const std::string text = utcOf(instant) + "+00:00";
    int hours = 0, minutes = 0, seconds = 0;
    service.getTime(hours, minutes, seconds);
    const bool same =
        service.getDate() == face.substr(2, 8) && service.getTime() == face.substr(11, 5) &&
        seconds == std::stoi(face.substr(17)) && service.getDate(text) == textFace.substr(2, 8) &&
        service.getTime(text) == textFace.substr(11, 5) &&
        service.getDisplayTimeVal() == expected.localAt(instant);
    EXPECT_TRUE(same) << "at " << text << " the clock shows " << service.getDate() << " "
                      << service.getTime() << " instead of " << face << ", and for the text "
                      << service.getDate(text) << " " << service.getTime(text) << " instead of "
                      << textFace;
    return same;
  }

  // The clock jumps to `from` and arms its timers there.
  bool eventsAgree(const WallClock& wall, Seconds from, Seconds to) {
    telephone.jumpTo(from);
    telephone.management.setValue("dhcp-enabled", "true");
    telephone.pass(std::chrono::milliseconds{1});
    recorder.events.clear();
    telephone.pass(std::chrono::seconds{to - from});
    const std::vector<Event> expected = expectedEvents(wall, from, to);
    if (recorder.events != expected) {
      EXPECT_THAT(recorder.events, testing::ElementsAreArray(expected));
      return false;
    }
    const auto dates = std::count_if(recorder.events.begin(), recorder.events.end(),
                                     [](const Event& event) { return event.isDate; });
    EXPECT_EQ(dates, dateChanges(wall, from, to)) << utcOf(from);
    return dates == dateChanges(wall, from, to);
  }

  support::Telephone telephone;
  EventRecorder recorder{telephone};

 private:
  const std::string m_storage;
  std::mt19937_64 m_random{20260308};
};

TEST_P(ClockOverACentury, ShowsTheLocalTime) {
  for (const int offset : kOffsets) {
    compareDisplay({GetParam(), offset, true, true});
    compareDisplay({GetParam(), offset, true, false});
    compareDisplay({GetParam(), offset, false, true});
  }
  for (const int shift : {30, 90, 120}) {
    for (const int offset : {-210, 0, 60, 570})
      compareDisplay({GetParam(), offset, true, true, shift});
  }
}

TEST_P(ClockOverACentury, AnnouncesEachHourAndEachDate) {
  for (const int offset : kEventOffsets) {
    compareEvents({GetParam(), offset, true, true});
    compareEvents({GetParam(), offset, true, false});
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, ClockOverACentury, testing::Range(0, 15));

class ClockOverEachHour : public ClockOverACentury {};

TEST_P(ClockOverEachHour, AnnouncesEachHourAndEachDate) {
  const Choice choice{GetParam(), 60, true, true};
  choose(choice);
  eventsAgree(WallClock(choice), secondsOf("1971-01-01T00:00:00"),
              secondsOf("2037-12-31T00:00:00"));
}

INSTANTIATE_TEST_SUITE_P(CentralEurope, ClockOverEachHour, testing::Values(9));

// The second implementation agrees with published dates.
TEST(IndependentZones, ChangeOnTheDatesOfTheCalendar) {
  const struct {
    Choice choice;
    const char* first;
    const char* second;
  } table[] = {{{9, 60, true, true}, "2026-03-29T01:00:00", "2026-10-25T01:00:00"},
               {{8, 0, true, true}, "2026-03-29T01:00:00", "2026-10-25T01:00:00"},
               {{10, 120, true, true}, "2026-03-29T01:00:00", "2026-10-25T01:00:00"},
               {{12, -300, true, true}, "2026-03-08T07:00:00", "2026-11-01T06:00:00"},
               {{13, 720, true, true}, "2026-04-04T14:00:00", "2026-09-26T14:00:00"},
               {{4, 600, true, true}, "2026-04-04T16:00:00", "2026-10-03T16:00:00"}};
  for (const auto& row : table) {
    EXPECT_EQ(WallClock(row.choice).changesIn(2026),
              (std::vector{secondsOf(row.first), secondsOf(row.second)}))
        << row.first;
  }
  const WallClock newYork({12, -300, true, true});
  EXPECT_EQ(newYork.faceAt(secondsOf("2026-03-08T06:59:59")), "2026-03-08T01:59:59");
  EXPECT_EQ(newYork.faceAt(secondsOf("2026-03-08T07:00:00")), "2026-03-08T03:00:00");
}

}  // namespace
