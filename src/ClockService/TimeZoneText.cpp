#include "TimeZoneText.h"

#include <cstdlib>

#include "BoundedPrint.h"
#include "Saturate.h"

namespace {

constexpr char TZ_FORMAT_STANDARD[] = "LOC%02d:%02d";
constexpr char TZ_FORMAT_STANDARD_SIGNED[] = "LOC%c%02d:%02d";
constexpr char TZ_FORMAT_DST[] = "%sDST%02d:%02d,%s";
constexpr char TZ_FORMAT_DST_SIGNED[] = "%sDST%c%02d:%02d,%s";
constexpr char TZ_SCRIPT_FORMAT[] = "#!/bin/sh\n\nexport TZ=%s\n\n";

using TimeZoneText::Buffer;
using TimeZoneText::LocalZone;

// Minutes west of UTC. Both parts carry the sign. "%02d" prints it with the hours, which loses it
// when they are 0.
struct West {
  explicit West(std::int32_t minutesWest)
      : total(minutesWest), hours(minutesWest / 60), minutes(minutesWest % 60) {}
  [[nodiscard]] bool losesSign() const { return hours == 0 && minutes < 0; }

  std::int32_t total;
  std::int32_t hours;
  std::int32_t minutes;
};

// Deliberately without a signed form: without daylight saving, half an hour east and half an hour
// west of UTC are both "LOC00:30", as on the devices in the field.
void printStandard(Buffer& tz, const West& west) {
  boundedPrint(tz, TZ_FORMAT_STANDARD, west.hours, std::abs(west.minutes));
}

void printFixedDaylight(Buffer& tz, const West& daylight) {
  if (!daylight.losesSign()) return printStandard(tz, daylight);
  boundedPrint(tz, TZ_FORMAT_STANDARD_SIGNED, '-', 0, -daylight.minutes);
}

void printRuledDaylight(Buffer& tz, const West& standard, const West& daylight,
                        const std::string& rule) {
  Buffer standardPart{};
  printStandard(standardPart, standard);
  if (daylight.losesSign()) {
    boundedPrint(tz, TZ_FORMAT_DST_SIGNED, standardPart.data(), '-', 0, -daylight.minutes,
                 rule.c_str());
  } else {
    boundedPrint(tz, TZ_FORMAT_DST, standardPart.data(), daylight.hours, std::abs(daylight.minutes),
                 rule.c_str());
  }
}

// Limited to the range that can be negated, for any settings.
West daylightOf(const West& standard, std::int32_t daylightMinutes) {
  return West(truncated(static_cast<double>(standard.total) - daylightMinutes));
}

}  // namespace

LocalZone TimeZoneText::localZone(const Settings& settings) {
  LocalZone zone;
  const West standard(truncated(static_cast<double>(settings.utcOffset) * -60.0));
  zone.offsetMinutes = -standard.total;
  if (!settings.daylightSaving) {
    printStandard(zone.tz, standard);
    return zone;
  }
  const West daylight = daylightOf(standard, settings.daylightMinutes);
  if (settings.automatic && !settings.rule.empty()) {
    printRuledDaylight(zone.tz, standard, daylight, settings.rule);
    return zone;
  }
  printFixedDaylight(zone.tz, daylight);
  zone.offsetMinutes = -daylight.total;
  return zone;
}

std::string TimeZoneText::script(const char* tz) {
  std::array<char, 1024> text{};
  boundedPrint(text, TZ_SCRIPT_FORMAT, tz);
  return text.data();
}
