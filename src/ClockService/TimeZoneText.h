#pragma once

#include <array>
#include <cstdint>
#include <string>

// The POSIX TZ value of the settings (POSIX.1-2017, 8.3: offsets count west of UTC). Pure.
namespace TimeZoneText {

struct Settings {
  float utcOffset{};  // hours east of UTC, any number
  bool daylightSaving{};
  std::int32_t daylightMinutes{};  // how far daylight saving puts the clock forward
  bool automatic{};                // by the rule; false: all year
  std::string rule;                // "M3.5.0/02:00,M10.5.0/03:00", or empty
};

using Buffer = std::array<char, 50>;

struct LocalZone {
  Buffer tz{};                   // the TZ value, cut to 49 characters
  std::int32_t offsetMinutes{};  // from UTC to local, without what the TZ rule adds
};

LocalZone localZone(const Settings& settings);

// The whole of "setupTZ.sh" for a TZ value.
std::string script(const char* tz);

}  // namespace TimeZoneText
