#include "verbs/TimeText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "base/Ascii.h"

namespace host {
namespace {

using std::chrono::seconds;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kLongestDuration = 36525 * kSecondsPerDay;  // seconds: a century

// The whole text as an unsigned decimal number.
std::optional<std::int64_t> number(std::string_view text) {
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

int digits(std::string_view text, std::size_t position, std::size_t count) {
  int value = 0;
  for (const char c : text.substr(position, count)) value = value * 10 + (c - '0');
  return value;
}

// HH:MM:SS or HH:MM at `position`, in seconds; nothing when a field is out of range.
std::optional<std::int64_t> clockTime(std::string_view text, std::size_t position, bool withSeconds,
                                      int lastHour) {
  const int hour = digits(text, position, 2);
  const int minute = digits(text, position + 3, 2);
  const int second = withSeconds ? digits(text, position + 6, 2) : 0;
  if (hour > lastHour || minute > 59 || second > 59) return std::nullopt;
  return std::int64_t{hour} * 3600 + minute * 60 + second;
}

constexpr std::string_view kUnits = "dhms";

std::int64_t unitSeconds(char unit) {
  switch (unit) {
    case 's':
      return 1;
    case 'm':
      return 60;
    case 'h':
      return 3600;
    case 'd':
      return kSecondsPerDay;
    default:
      return 0;
  }
}

// The offset from UTC at the end of an instant, in seconds; nothing when it has none of the forms.
std::optional<std::int64_t> zoneOffset(std::string_view text) {
  if (text == "Z") return 0;
  if (!hasShape(text, "+00:00") && !hasShape(text, "-00:00")) return std::nullopt;
  const auto offset = clockTime(text, 1, false, 23);
  if (!offset) return std::nullopt;
  return text.front() == '-' ? -*offset : *offset;
}

// Larger than any offset from UTC.
constexpr seconds kOffsetSearch = std::chrono::days(2);

}  // namespace

std::optional<seconds> parseDuration(std::string_view text) {
  if (hasShape(text, "00:00:00")) {
    const auto time = clockTime(text, 0, true, 99);
    return time ? std::optional(seconds(*time)) : std::nullopt;
  }
  std::int64_t total = 0;
  std::int64_t unitBefore = kLongestDuration;
  do {
    const std::size_t end = text.find_first_of(kUnits);
    if (end == std::string_view::npos) return std::nullopt;
    const std::int64_t unit = unitSeconds(text[end]);
    const auto count = number(text.substr(0, end));
    if (!count || *count > kLongestDuration / unit || unit >= unitBefore) return std::nullopt;
    total += *count * unit;
    unitBefore = unit;
    text.remove_prefix(end + 1);
  } while (!text.empty());
  return total <= kLongestDuration ? std::optional(seconds(total)) : std::nullopt;
}

std::optional<std::chrono::microseconds> parseExactDuration(std::string_view text) {
  constexpr std::size_t kMostDigits = 6;
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || text.back() != 's') return std::nullopt;
  std::string fraction(text.substr(point + 1, text.size() - point - 2));
  if (fraction.empty() || fraction.size() > kMostDigits) return std::nullopt;
  fraction.resize(kMostDigits, '0');
  const auto whole = number(text.substr(0, point));
  const auto part = number(fraction);
  if (!whole || !part || *whole >= kLongestDuration) return std::nullopt;
  return seconds(*whole) + std::chrono::microseconds(*part);
}

std::optional<std::chrono::milliseconds> parseRealDuration(std::string_view text) {
  using std::chrono::milliseconds;
  std::optional<milliseconds> limit = parseDuration(text);
  if (!limit) {
    const auto exact = parseExactDuration(text);
    if (exact) limit = std::chrono::ceil<milliseconds>(*exact);
  }
  return limit && limit->count() > 0 ? limit : std::nullopt;
}

std::string exactDurationText(std::chrono::microseconds duration) {
  constexpr std::int64_t kSecond = 1'000'000;
  std::string fraction = std::to_string(kSecond + duration.count() % kSecond).substr(1);
  while (fraction.size() > 1 && fraction.back() == '0') fraction.pop_back();
  return std::to_string(duration.count() / kSecond) + '.' + fraction + 's';
}

std::optional<seconds> parseInstant(std::string_view text) {
  constexpr std::string_view kShape = "0000-00-00T00:00:00";
  if (text.size() <= kShape.size() || !hasShape(text.substr(0, kShape.size()), kShape)) {
    return std::nullopt;
  }
  const auto offset = zoneOffset(text.substr(kShape.size()));
  const auto time = clockTime(text, 11, true, 23);
  const std::chrono::year_month_day day{
      std::chrono::year(digits(text, 0, 4)),
      std::chrono::month(static_cast<unsigned>(digits(text, 5, 2))),
      std::chrono::day(static_cast<unsigned>(digits(text, 8, 2)))};
  if (!offset || !time || !day.ok()) return std::nullopt;
  const seconds instant =
      std::chrono::sys_days(day).time_since_epoch() + seconds(*time) - seconds(*offset);
  if (instant < seconds(0) || instant > kLastInstant) return std::nullopt;
  return instant;
}

std::optional<seconds> parseLocal(std::string_view text) {
  constexpr std::size_t kBlank = 10;  // between date and time
  if (text.size() <= kBlank || text[kBlank] != ' ') return std::nullopt;
  std::string utc(text);
  utc[kBlank] = 'T';
  return parseInstant(utc + 'Z');
}

std::vector<seconds> instantsOfLocal(seconds local) {
  std::vector<seconds> instants;
  // The offset is one of those a while before and after: no zone changes twice in between.
  for (const seconds reference : {local - kOffsetSearch, local + kOffsetSearch}) {
    const seconds instant = local - offsetAt(reference);
    const bool known = !instants.empty() && instants.front() == instant;
    if (!known && offsetAt(instant) == local - instant) instants.push_back(instant);
  }
  return instants;
}

std::optional<double> parseSpeed(std::string_view text) {
  if (text == "max") return std::numeric_limits<double>::infinity();
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
  if (error != std::errc() || stop != end || !(value >= 0 && value <= 1e9)) return std::nullopt;
  return std::signbit(value) ? std::nullopt : std::optional(value);
}

std::string speedText(double speed) {
  if (speed <= 0) return "paused";
  if (std::isinf(speed)) return "max";
  std::array<char, 32> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%g", speed);
  return buffer.data();
}

std::string longInstantText(seconds sinceEpoch) {
  const std::string text = instantText(sinceEpoch);
  return text.substr(0, text.size() - 1) + "+00:00";
}

std::string localInstantText(seconds sinceEpoch, seconds eastOfUtc) {
  const std::string local = instantText(sinceEpoch + eastOfUtc);
  return local.substr(0, local.size() - 1) + offsetText(eastOfUtc).substr(std::strlen("UTC"));
}

std::string localText(time_t sinceEpoch) {
  tm local{};
  if (localtime_r(&sinceEpoch, &local) == nullptr) return "";
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S (", &local);
  return text + std::string(local.tm_zone) + ", " + offsetText(seconds(local.tm_gmtoff)) + ')';
}

std::string secondsText(std::chrono::milliseconds limit) {
  constexpr double kSecond = 1000;  // milliseconds
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.13g s", static_cast<double>(limit.count()) / kSecond);
  return text.data();
}

std::string offsetText(seconds eastOfUtc) {
  const long long minutes = std::llabs(eastOfUtc.count()) / 60;
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "UTC%c%02lld:%02lld", eastOfUtc.count() < 0 ? '-' : '+',
                minutes / 60, minutes % 60);
  return text.data();
}

std::string durationText(seconds duration) {
  const long long total = duration.count();
  std::array<char, 32> clock{};
  std::snprintf(clock.data(), clock.size(), "%02lld:%02lld:%02lld", total % kSecondsPerDay / 3600,
                total % 3600 / 60, total % 60);
  if (total < kSecondsPerDay) return clock.data();
  return std::to_string(total / kSecondsPerDay) + "d " + clock.data();
}

}  // namespace host
