#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// The rules for daylight saving read a second time, from the zones' descriptions and not from the
// service's table, with civil-day arithmetic alone: no libc time call, no TZ text. Pure.
// Instants are seconds since 1970-01-01 UTC.
namespace independent {

using Seconds = std::int64_t;

// Days since 1970-01-01 of a date, and back. month: 1-12.
struct Date {
  std::int64_t year;
  int month;
  int day;
};
std::int64_t dayOf(const Date& date);
Date dateOf(std::int64_t day);

// "2026-03-08T06:59:50" as an instant, and back.
Seconds secondsOf(const std::string& utc);
std::string utcOf(Seconds instant);

// One change of a zone: which Sunday of the month, and at what local time by the clock until then.
enum class Sunday { first, second, third, last };
struct Change {
  Sunday which;
  int month;
  int hour;
  int minute;
};
struct Zone {
  int id;
  bool changes;  // false: no daylight saving of its own
  Change toDaylight;
  Change toStandard;
};
const std::array<Zone, 15>& zones();

// What a user has chosen.
struct Choice {
  int zone = 0;
  int minutesEast = 0;  // offset from UTC
  bool daylight = false;
  bool automatic = false;
  int shift = 60;  // minutes
};

// The clock on the wall of that user.
class WallClock {
 public:
  explicit WallClock(const Choice& choice);

  [[nodiscard]] Seconds offsetAt(Seconds instant) const;  // east of UTC
  [[nodiscard]] Seconds localAt(Seconds instant) const { return instant + offsetAt(instant); }
  // The clock's face, "YYYY-MM-DDThh:mm:ss".
  [[nodiscard]] std::string faceAt(Seconds instant) const { return utcOf(localAt(instant)); }
  // The face for an instant that somebody else has written down as UTC text.
  [[nodiscard]] std::string faceForText(Seconds instant) const;

  // The instants of the changes in a year, earlier one first; none without a rule.
  [[nodiscard]] std::vector<Seconds> changesIn(std::int64_t year) const;

  // The hour's, the day's next beginning as the clock on the wall would count now.
  [[nodiscard]] Seconds nextHour(Seconds now) const;
  [[nodiscard]] Seconds nextMidnight(Seconds now) const;
  [[nodiscard]] std::int64_t localDay(Seconds instant) const;

 private:
  [[nodiscard]] bool isDaylight(Seconds instant) const;

  // Daylight time of a year: from `forward` to `back`, or outside of back to forward.
  struct Daylight {
    Seconds forward;
    Seconds back;
  };
  static constexpr std::int64_t kFirstYear = 1890;
  static constexpr std::size_t kYears = 260;

  std::vector<Daylight> m_years;  // from kFirstYear on; empty without a rule
  Seconds m_standard;             // seconds east of UTC
  Seconds m_daylight;
  Seconds m_textOffset;  // what is added to UTC text before the rule is applied
};

}  // namespace independent
