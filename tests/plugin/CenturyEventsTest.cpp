// What observers hear from 1971 to 2037, against the independent reading of the rules. The texts
// are compared at every change of every zone and offset; events take an hour of the service each,
// so they are compared for a covering subset: all zones, all changes, nine offsets each (the ends,
// halves and quarters on either side, whole hours), from three hours before a change to twenty-five
// after it; at random days; and for one zone without a gap over all of the years.

#include <gmock/gmock.h>

#include <ostream>

#include "ClockServiceObserverIfc.h"
#include "plugin/CenturyClock.h"

namespace {

using independent::Choice;
using independent::Date;
using independent::Seconds;
using independent::WallClock;
using plugin::kFirstYear;
using plugin::kLastYear;
using plugin::nameOf;

constexpr Seconds kHour = 3600;
constexpr std::array<int, 9> kEventOffsets{-750, -210, -30, 0, 15, 45, 60, 525, 750};
constexpr int kRandomDays = 20;

// One event and when it was heard. A time: hours, minutes, seconds; a date: day, month, year.
struct Event {
  Seconds instant;
  bool isDate;
  std::int64_t a, b, c;
  bool operator==(const Event&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Event& event) {
  return stream << independent::utcOf(event.instant) << (event.isDate ? " date " : " time ")
                << event.a << " " << event.b << " " << event.c;
}

class Tape final : public ClockServiceObserverIfc {
 public:
  explicit Tape(const plugin::Telephone& telephone) : m_telephone(telephone) {}
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
  const plugin::Telephone& m_telephone;
};

// The events that are due after `from` and until `to`, for a clock armed at `from`: at each end of
// an hour by the clock on the wall, and the date when it is another one then.
std::vector<Event> expectedEvents(const WallClock& wall, Seconds from, Seconds to) {
  std::vector<Event> events;
  std::int64_t latestDay = wall.localDay(from);
  for (Seconds hour = wall.nextHour(from); hour <= to; hour = wall.nextHour(hour)) {
    const Seconds ofDay = wall.localAt(hour) - wall.localDay(hour) * 24 * kHour;
    events.push_back({hour, false, ofDay / kHour, ofDay / 60 % 60, ofDay % 60});
    const std::int64_t day = wall.localDay(hour);
    if (day != latestDay) {
      const Date date = independent::dateOf(day);
      events.push_back({hour, true, date.day, date.month, date.year});
    }
    latestDay = day;
  }
  return events;
}

// The dates that the clock on the wall turns to after `from` and until `to`. Back as well, where a
// change of more than an hour goes over a midnight.
std::vector<std::int64_t> datesShown(const WallClock& wall, Seconds from, Seconds to) {
  constexpr Seconds kQuarter = 900;  // every midnight lies on one
  std::vector<std::int64_t> days;
  std::int64_t latest = wall.localDay(from);
  for (Seconds instant = from - from % kQuarter + kQuarter; instant <= to; instant += kQuarter)
    if (wall.localDay(instant) != latest) days.push_back(latest = wall.localDay(instant));
  return days;
}

class EventsOverACentury : public plugin::CenturyClock {
 protected:
  EventsOverACentury() { telephone.service().observeTimeEvents(&tape); }

  // The clock jumps there and arms its timers anew.
  void beginAt(Seconds instant) {
    telephone.jumpTo(instant);
    telephone.management.setValue("dhcp-enabled", "true");
    telephone.pass(std::chrono::milliseconds{1});
    tape.events.clear();
  }
  bool agrees(const WallClock& wall, Seconds from, Seconds to) {
    beginAt(from);
    telephone.pass(std::chrono::seconds{to - from});
    if (tape.events != expectedEvents(wall, from, to)) {
      EXPECT_THAT(tape.events, testing::ElementsAreArray(expectedEvents(wall, from, to)));
      return false;
    }
    std::vector<std::int64_t> days;
    for (const Event& event : tape.events)
      if (event.isDate)
        days.push_back(
            independent::dayOf({event.c, static_cast<int>(event.b), static_cast<int>(event.a)}));
    EXPECT_EQ(days, datesShown(wall, from, to)) << independent::utcOf(from);
    return days == datesShown(wall, from, to);
  }
  bool agreesAtChanges(const Choice& choice) {
    SCOPED_TRACE(nameOf(choice));
    choose(choice);
    const WallClock wall(choice);
    for (std::int64_t year = kFirstYear; year <= kLastYear; ++year)
      for (const Seconds change : wall.changesIn(year))
        if (!agrees(wall, change - 3 * kHour, change + 25 * kHour)) return false;
    for (int i = 0; i < kRandomDays; ++i) {
      const Seconds from = randomInstant();
      if (!agrees(wall, from, from + 30 * kHour)) return false;
    }
    return true;
  }

  Tape tape{telephone};
};

TEST_P(EventsOverACentury, TellOfEachHourAndEachDateAroundEachChange) {
  for (const int offset : kEventOffsets)
    if (!agreesAtChanges({zone(), offset, true, true})) break;
}

TEST_P(EventsOverACentury, TellOfEachHourAndEachDatePutForwardByHand) {
  for (const int offset : kEventOffsets)
    if (!agreesAtChanges({zone(), offset, true, false})) break;
}

INSTANTIATE_TEST_SUITE_P(Zones, EventsOverACentury, testing::Range(0, 15));

class EventsWithoutAGap : public EventsOverACentury {};

TEST_P(EventsWithoutAGap, TellOfEachHourAndEachDateOfAllTheYears) {
  const Choice choice{zone(), 60, true, true};
  choose(choice);
  agrees(WallClock(choice), independent::secondsOf("1971-01-01T00:00:00"),
         independent::secondsOf("2037-12-31T00:00:00"));
}

INSTANTIATE_TEST_SUITE_P(CentralEurope, EventsWithoutAGap, testing::Values(9));

}  // namespace
