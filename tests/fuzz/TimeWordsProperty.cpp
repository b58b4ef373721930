// Durations, instants and speeds as users type them: only the documented forms are accepted, with
// the documented meaning, and a printed value can be read back.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <utility>

#include "ClockUtils.h"
#include "fuzz/Property.h"
#include "verbs/TimeText.h"

namespace {

using fuzz::hold;
using std::chrono::seconds;

bool areDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

double numberOf(std::string_view text) {
  return std::strtod(std::string(text).c_str(), nullptr);
}

std::optional<double> clockForm(std::string_view text) {
  if (text.size() != 8 || text[2] != ':' || text[5] != ':') return std::nullopt;
  const std::string_view parts[] = {text.substr(0, 2), text.substr(3, 2), text.substr(6, 2)};
  if (!std::all_of(std::begin(parts), std::end(parts), areDigits)) return std::nullopt;
  if (parts[1] > "59" || parts[2] > "59") return std::nullopt;
  return numberOf(parts[0]) * 3600 + numberOf(parts[1]) * 60 + numberOf(parts[2]);
}

std::optional<double> unitForm(std::string_view text) {
  constexpr double kCentury = 36525.0 * 86400;
  constexpr std::pair<char, double> kUnits[] = {{'d', 86400}, {'h', 3600}, {'m', 60}, {'s', 1}};
  if (text.empty()) return std::nullopt;
  double value = 0;
  for (const auto& [unit, seconds] : kUnits) {
    const std::size_t end = text.find(unit);
    if (end == std::string_view::npos) continue;
    if (!areDigits(text.substr(0, end))) return std::nullopt;
    value += numberOf(text.substr(0, end)) * seconds;
    text.remove_prefix(end + 1);
  }
  return text.empty() && value <= kCentury ? std::optional(value) : std::nullopt;
}

void holdDuration(std::string_view text) {
  const auto duration = host::parseDuration(text);
  const auto expected = clockForm(text) ? clockForm(text) : unitForm(text);
  hold(duration.has_value() == expected.has_value(), "exactly the documented forms are durations",
       text);
  if (!duration) return;
  hold(*duration == seconds(static_cast<std::int64_t>(*expected)),
       "a duration has the length that was typed", text);
  const std::string printed = host::durationText(*duration);
  hold(fuzz::isShortLine(printed), "a printed duration is one short line", printed);
  if (*duration < std::chrono::days(1))
    hold(host::parseDuration(printed) == duration, "a printed duration can be read back", text);
}

// As the device reads it, except that clockctl refuses second 60 and accepts "Z" for UTC.
std::optional<seconds> deviceInstant(std::string text) {
  if (text.size() == 20 && text.back() == 'Z') text = text.substr(0, 19) + "+00:00";
  tm record{};
  if (!ClockUtils::convertTimeStringToTimeStruct(text, record)) return std::nullopt;
  const seconds instant(timegm(&record));
  const bool shown = instant >= seconds(0) && instant <= host::kLastInstant;
  return shown && text.substr(17, 2) != "60" ? std::optional(instant) : std::nullopt;
}

void holdInstant(const std::string& text) {
  const auto instant = host::parseInstant(text);
  hold(instant == deviceInstant(text), "an instant is the one that the device reads", text);
  if (!instant) return;
  hold(host::parseInstant(host::longInstantText(*instant)) == instant,
       "the long form can be read back", text);
  hold(host::parseInstant(host::instantText(*instant)) == instant,
       "the short form can be read back", text);
  hold(fuzz::isShortLine(host::localText(instant->count())), "local time is one line", text);
}

bool isDecimal(std::string_view text) {
  const bool numeric = text.find_first_not_of("0123456789.") == std::string_view::npos;
  return numeric && std::count(text.begin(), text.end(), '.') <= 1 &&
         text.find_first_not_of('.') != std::string_view::npos;
}

// Skips long texts: they may be numbers too small for every parser.
void holdSpeed(std::string_view text) {
  if (text.size() > 300) return;
  const auto speed = host::parseSpeed(text);
  const bool decimal = isDecimal(text) && numberOf(text) <= 1e9;
  hold(speed.has_value() == (decimal || text == "max"), "a speed is a number up to 1e9, or max",
       text);
  if (!speed) return;
  hold(decimal ? *speed == numberOf(text) : std::isinf(*speed),
       "a speed has the value that was typed", text);
  hold(!std::signbit(*speed), "no negative speed", text);
  hold(fuzz::isShortLine(host::speedText(*speed)), "a printed speed is one short line", text);
}

}  // namespace

void fuzz::property(std::string_view input) {
  holdDuration(input);
  holdInstant(std::string(input));
  holdSpeed(input);
}
