#include "simulation/model/TimeZoneOf.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "simulation/model/Texts.h"
#include "simulation/model/ZoneTable.h"

namespace simulation {
namespace {

// Whole minutes toward zero, kept within what can be negated; not a number is none.
std::int64_t wholeMinutes(double minutes) {
  constexpr double most = std::numeric_limits<int>::max();
  if (std::isnan(minutes)) return 0;
  return static_cast<std::int64_t>(std::fmax(-most, std::fmin(most, minutes)));
}

std::string plain(std::int64_t west) {
  return print("%02d:%02d", static_cast<int>(west / 60), std::abs(static_cast<int>(west % 60)));
}

// Less than an hour east keeps its sign.
std::string withSign(std::int64_t west) {
  return west < 0 && west > -60 ? "-" + plain(west) : plain(west);
}

std::string_view ruleOf(int zone) {
  const auto row = static_cast<std::size_t>(zone);
  return zone >= 0 && row < kZones.size() ? kZones[row].rule : std::string_view();
}

std::string cut(const std::string& text) {
  return text.substr(0, 49);
}

}  // namespace

ZoneOutcome timeZoneOf(const ZoneSettings& settings) {
  const std::int64_t west = wholeMinutes(static_cast<double>(settings.hoursEast) * -60.0);
  const std::string standard = cut("LOC" + plain(west));
  if (!settings.daylight) return {standard, static_cast<int>(-west)};
  const std::int64_t shifted = wholeMinutes(static_cast<double>(west - settings.daylightMinutes));
  const std::string_view rule = ruleOf(settings.zone);
  if (!settings.automatic || rule.empty()) {
    return {cut("LOC" + withSign(shifted)), static_cast<int>(-shifted)};
  }
  const std::string ruled = standard + "DST" + withSign(shifted) + "," + std::string(rule);
  return {cut(ruled), static_cast<int>(-west)};
}

}  // namespace simulation
