#pragma once

#include <string>

namespace simulation {

struct ZoneSettings {
  float hoursEast = 0;
  bool daylight = false;
  int daylightMinutes = 0;
  bool automatic = false;
  int zone = 0;
};

struct ZoneOutcome {
  std::string tz;          // at most 49 characters
  int displayMinutes = 0;  // to add to UTC for the display of a UTC text
};

[[nodiscard]] ZoneOutcome timeZoneOf(const ZoneSettings& settings);

}  // namespace simulation
