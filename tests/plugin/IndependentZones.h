#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

// A second implementation of the daylight-saving rules. It is written from the descriptions of the
// zones instead of the service's table, and calculates with std::chrono's calendar: no time call of
// the C library, no TZ value. Pure. Instants are seconds since 1970-01-01 UTC.
namespace independent {

using Seconds = std::int64_t;

std::chrono::year_month_day dateOf(std::int64_t daysSince1970);

// "2026-03-08T06:59:50" as an instant, and back.
Seconds secondsOf(const std::string& utc);
std::string utcOf(Seconds instant);

// A change of a zone: a Sunday of a month, and the local time in the offset until then.
enum class Sunday { first, second, third, last };
struct Change {
  Sunday which;
  unsigned int month;
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

// The wall clock of that user.
class WallClock {
 public:
  explicit WallClock(const Choice& choice);

  [[nodiscard]] Seconds localAt(Seconds instant) const { return instant + offsetAt(instant); }
  // The local time, "YYYY-MM-DDThh:mm:ss".
  [[nodiscard]] std::string faceAt(Seconds instant) const { return utcOf(localAt(instant)); }
  // The local time that the service shows for an instant given as a UTC string.
  [[nodiscard]] std::string faceForText(Seconds instant) const;

  // The instants of the changes in a year, the earlier one first; none without a rule.
  [[nodiscard]] std::vector<Seconds> changesIn(std::int64_t year) const;

  // The next full hour, counted with the offset of now.
  [[nodiscard]] Seconds nextHour(Seconds now) const;
  // The local date, in days since 1970-01-01.
  [[nodiscard]] std::int64_t localDay(Seconds instant) const;

 private:
  [[nodiscard]] Seconds offsetAt(Seconds instant) const;  // east of UTC
  [[nodiscard]] bool isDaylight(Seconds instant) const;

  // Daylight time of a year: from `forward` to `back`, or before `back` and from `forward` on.
  struct Daylight {
    Seconds forward;
    Seconds back;
  };
  static constexpr std::int64_t kFirstYear = 1890;
  static constexpr std::size_t kYears = 260;

  std::vector<Daylight> m_years;  // from kFirstYear on; empty without a rule
  Seconds m_standard;             // seconds east of UTC
  Seconds m_daylight;
  Seconds m_textOffset;  // added to a UTC string before the rule is applied
};

}  // namespace independent
