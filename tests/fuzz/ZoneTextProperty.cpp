// The TZ value for any settings, which come as texts from management and the store: it fits its
// buffer, has no character that is special in a shell, and expresses the settings.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "ClientUtils.h"
#include "ClockService/TimeZoneText.h"
#include "DSTZoneRules.h"
#include "Saturate.h"
#include "fuzz/Property.h"

namespace {

using fuzz::hold;

TimeZoneText::Settings settingsOf(fuzz::Reader lines) {
  TimeZoneText::Settings settings;
  settings.utcOffset = toFloat(std::strtod(std::string(lines.line()).c_str(), nullptr));
  settings.daylightMinutes = ClientUtils::stoi(std::string(lines.line()));
  settings.daylightSaving = ClientUtils::stob(std::string(lines.line()));
  settings.automatic = ClientUtils::stob(std::string(lines.line()));
  DSTZoneRules().getDSTZoneRule(ClientUtils::stoi(std::string(lines.line())), settings.rule);
  return settings;
}

// Whole minutes, limited to 32 bits. NaN is 0.
double wholeMinutes(double minutes) {
  constexpr double kLimit = 2147483647;
  return std::isnan(minutes) ? 0 : std::clamp(std::trunc(minutes), -kLimit, kLimit);
}

// Parses a TZ value from front to back.
class ZoneParser {
 public:
  explicit ZoneParser(std::string_view text) : m_whole(text), m_rest(text) {}

  void holdNext(std::string_view name) {
    hold(m_rest.starts_with(name), "a zone has the expected names and separators", m_whole);
    m_rest.remove_prefix(name.size());
  }

  // "[-]HH:MM" in minutes.
  double offset() {
    const bool negative = m_rest.starts_with('-');
    if (negative) m_rest.remove_prefix(1);
    const double hours = digits(m_rest.find_first_not_of("0123456789"));
    holdNext(":");
    const double minutes = digits(2);
    hold(minutes < 60, "the minutes are below 60", m_whole);
    return (negative ? -1 : 1) * (hours * 60 + minutes);
  }

  [[nodiscard]] std::string_view rest() const { return m_rest; }

 private:
  double digits(std::size_t count) {
    const std::string number(m_rest.substr(0, count));
    hold(!number.empty() && number.find_first_not_of("0123456789") == std::string::npos,
         "an offset consists of digits", m_whole);
    m_rest.remove_prefix(number.size());
    return std::strtod(number.c_str(), nullptr);
  }

  std::string_view m_whole;
  std::string_view m_rest;
};

bool same(double one, double other) {
  return !(one < other) && !(other < one);
}

// These telephones drop the sign of an offset of less than an hour east of UTC.
void holdStandard(ZoneParser& zone, double west, std::string_view text) {
  const double shown = zone.offset();
  hold(same(shown, west) || (std::abs(west) < 60 && same(shown, -west)),
       "standard time has the configured offset", text);
}

void holdMeaning(const TimeZoneText::Settings& settings, std::string_view text) {
  const double west = wholeMinutes(static_cast<double>(settings.utcOffset) * -60.0);
  const double daylight = wholeMinutes(west - settings.daylightMinutes);
  const bool hasRule = settings.daylightSaving && settings.automatic && !settings.rule.empty();
  ZoneParser zone(text);
  zone.holdNext("LOC");
  if (!settings.daylightSaving || hasRule) {
    holdStandard(zone, west, text);
  } else {
    hold(same(zone.offset(), daylight), "daylight saving has the configured offset", text);
  }
  if (hasRule) {
    zone.holdNext("DST");
    hold(same(zone.offset(), daylight), "daylight saving is as configured", text);
    zone.holdNext(",");
  }
  hold(zone.rest() == (hasRule ? settings.rule : ""), "a zone ends with the configured rule", text);
}

}  // namespace

// One line each: offset, minutes, daylight saving, automatic, zone.
void fuzz::property(std::string_view input) {
  const TimeZoneText::Settings settings = settingsOf(Reader(input));
  const TimeZoneText::LocalZone zone = TimeZoneText::localZone(settings);
  const std::string text(zone.tz.data(), strnlen(zone.tz.data(), zone.tz.size()));
  const std::size_t longest = zone.tz.size() - 1;
  hold(text.size() <= longest, "a zone fits its buffer", text);
  if (text.size() < longest) holdMeaning(settings, text);
  hold(text.find_first_not_of("LOCDST0123456789:-,./M") == std::string::npos,
       "a zone has only valid characters", text);
  hold(TimeZoneText::script(text.c_str()) == "#!/bin/sh\n\nexport TZ=" + text + "\n\n",
       "the script exports the zone", text);
}
