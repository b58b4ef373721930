// The zone of any settings, as they come as texts from management and store: a value for TZ that
// fits its buffer, that no shell can take for anything else, and that says what the settings say.

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

// Minutes west of UTC, as far as 32 bits go.
double within(double minutes) {
  constexpr double kLimit = 2147483647;
  return std::isnan(minutes) ? 0 : std::clamp(std::trunc(minutes), -kLimit, kLimit);
}

// Takes a zone apart, front to back.
class Zone {
 public:
  explicit Zone(std::string_view text) : m_whole(text), m_rest(text) {}

  void holdNext(std::string_view name) {
    hold(m_rest.starts_with(name), "a zone has its names", m_whole);
    m_rest.remove_prefix(name.size());
  }

  // "[-]HH:MM" in minutes.
  double offset() {
    const bool negative = m_rest.starts_with('-');
    if (negative) m_rest.remove_prefix(1);
    const double hours = digits(m_rest.find_first_not_of("0123456789"));
    holdNext(":");
    const double minutes = digits(2);
    hold(minutes < 60, "an hour has 60 minutes", m_whole);
    return (negative ? -1 : 1) * (hours * 60 + minutes);
  }

  [[nodiscard]] std::string_view rest() const { return m_rest; }

 private:
  double digits(std::size_t count) {
    const std::string number(m_rest.substr(0, count));
    hold(!number.empty() && number.find_first_not_of("0123456789") == std::string::npos,
         "an offset is of digits", m_whole);
    m_rest.remove_prefix(number.size());
    return std::strtod(number.c_str(), nullptr);
  }

  std::string_view m_whole;
  std::string_view m_rest;
};

bool same(double one, double other) {
  return !(one < other) && !(other < one);
}

// Less than an hour east of UTC has lost its sign, as these telephones have it.
void holdStandard(Zone& zone, double west, std::string_view text) {
  const double shown = zone.offset();
  hold(same(shown, west) || (std::abs(west) < 60 && same(shown, -west)),
       "standard time is the offset's", text);
}

void holdMeaning(const TimeZoneText::Settings& settings, std::string_view text) {
  const double west = within(static_cast<double>(settings.utcOffset) * -60.0);
  const double daylight = within(west - settings.daylightMinutes);
  const bool ruled = settings.daylightSaving && settings.automatic && !settings.rule.empty();
  Zone zone(text);
  zone.holdNext("LOC");
  if (!settings.daylightSaving || ruled)
    holdStandard(zone, west, text);
  else
    hold(same(zone.offset(), daylight), "daylight saving is the offset's", text);
  if (ruled) {
    zone.holdNext("DST");
    hold(same(zone.offset(), daylight), "daylight saving is as told", text);
    zone.holdNext(",");
  }
  hold(zone.rest() == (ruled ? settings.rule : ""), "a zone ends with its rule", text);
}

}  // namespace

// A line each: offset, minutes, daylight saving, automatic, zone.
void fuzz::property(std::string_view input) {
  const TimeZoneText::Settings settings = settingsOf(Reader(input));
  const TimeZoneText::LocalZone zone = TimeZoneText::localZone(settings);
  const std::string text(zone.tz.data(), strnlen(zone.tz.data(), zone.tz.size()));
  const std::size_t longest = zone.tz.size() - 1;
  hold(text.size() <= longest, "a zone fits its buffer", text);
  if (text.size() < longest) holdMeaning(settings, text);
  hold(text.find_first_not_of("LOCDST0123456789:-,./M") == std::string::npos,
       "a zone is of its letters", text);
  hold(TimeZoneText::script(text.c_str()) == "#!/bin/sh\n\nexport TZ=" + text + "\n\n",
       "the script is whole", text);
}
