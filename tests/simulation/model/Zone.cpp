#include "simulation/model/Zone.h"

#include <algorithm>
#include <optional>

namespace simulation {
namespace {

constexpr std::int64_t kHour = 3600;

// Reads a TZ text from left to right.
class Reader {
 public:
  explicit Reader(const std::string& text) : m_text(text) {}

  [[nodiscard]] bool atEnd() const { return m_at >= m_text.size(); }
  bool take(char wanted) {
    if (atEnd() || m_text[m_at] != wanted) return false;
    ++m_at;
    return true;
  }
  void takeName() {
    while (!atEnd() && m_text[m_at] >= 'A' && m_text[m_at] <= 'Z') ++m_at;
  }
  std::optional<std::int64_t> takeNumber() {
    if (atEnd() || !isDigit(m_text[m_at])) return std::nullopt;
    std::int64_t number = 0;
    while (!atEnd() && isDigit(m_text[m_at])) number = number * 10 + (m_text[m_at++] - '0');
    return number % 65536;  // the C library keeps sixteen bits of it
  }
  // "hh:mm"; what is missing is zero.
  void takeTime(std::int64_t& hours, std::int64_t& minutes) {
    hours = takeNumber().value_or(0);
    if (take(':')) minutes = takeNumber().value_or(0);
  }

 private:
  static bool isDigit(char c) { return c >= '0' && c <= '9'; }

  const std::string& m_text;
  std::size_t m_at = 0;
};

// "-5:30" is east of UTC. More than 24 hours count as 24, more than 59 minutes as 59.
std::int64_t takeOffset(Reader& reader) {
  const std::int64_t sign = reader.take('-') ? 1 : -1;
  std::int64_t hours = 0;
  std::int64_t minutes = 0;
  reader.takeTime(hours, minutes);
  return sign *
         (std::min<std::int64_t>(hours, 24) * kHour + std::min<std::int64_t>(minutes, 59) * 60);
}

bool takeChange(Reader& reader, Change& change) {
  reader.take(',');
  if (!reader.take('M')) return false;
  Change read;
  read.month = reader.takeNumber().value_or(0);
  reader.take('.');
  read.week = reader.takeNumber().value_or(0);
  reader.take('.');
  const auto weekday = reader.takeNumber();
  // As far as it is read, the C library has it in its record already.
  change = read;
  if (!weekday || read.month < 1 || read.month > 12 || read.week < 1 || read.week > 5) return false;
  change.weekday = *weekday;
  change.seconds = 2 * kHour;
  if (!reader.take('/')) return true;
  std::int64_t hours = 2;
  std::int64_t minutes = 0;
  if (reader.atEnd()) return change.seconds = 0, false;
  reader.takeTime(hours, minutes);
  change.seconds = hours * kHour + minutes * 60;
  return true;
}

}  // namespace

std::int64_t Change::readingIn(std::int64_t year) const {
  if (month == 0) return secondsTo({year, 1, 1}) + seconds;
  const std::int64_t first = daysTo(year, month, 1);
  std::int64_t day = first + (weekday - weekdayOf(first) + 7) % 7 + (week - 1) * 7;
  while (day >= first + daysInMonth(year, month)) day -= 7;
  return day * 24 * kHour + seconds;
}

Zone::Zone(const std::string& tz) {
  Reader reader(tz);
  reader.takeName();
  if (reader.atEnd()) return;
  m_standard = takeOffset(reader);
  m_changes = !reader.atEnd();
  if (!m_changes) return;
  reader.takeName();
  m_daylight = takeOffset(reader);
  if (takeChange(reader, m_begin)) takeChange(reader, m_end);
}

std::int64_t Zone::springIn(std::int64_t year) const {
  return m_begin.readingIn(year) - m_standard;
}

std::int64_t Zone::autumnIn(std::int64_t year) const {
  return m_end.readingIn(year) - m_daylight;
}

// The rule counts within one year of UTC; in the south the year begins and ends with daylight
// saving. The C library has no changes before 1970: it is then as on the first day of 1970.
bool Zone::isDaylight(std::int64_t instant) const {
  if (!m_changes) return false;
  const std::int64_t year = std::max<std::int64_t>(readingAt(instant).year, 1970);
  const std::int64_t begin = springIn(year);
  const std::int64_t end = autumnIn(year);
  return begin > end ? instant < end || instant >= begin : instant >= begin && instant < end;
}

std::int64_t Zone::offsetAt(std::int64_t instant) const {
  return isDaylight(instant) ? m_daylight : m_standard;
}

Civil Zone::localAt(std::int64_t instant) const {
  return readingAt(instant + offsetAt(instant));
}

bool Zone::isSouthern() const {
  return m_changes && springIn(1970) > autumnIn(1970);
}

// Long before 1970 the south has no standard time in which the C library could look its offset up:
// it then takes daylight saving to be an hour.
std::int64_t Zone::instantOf(const Civil& local, bool daylight) const {
  const std::int64_t reading = secondsTo(local);
  const bool longAgo = readingAt(reading).year < 1961;
  if (longAgo && !daylight && isSouthern()) return reading - m_daylight + 3600;
  return reading - (daylight && m_changes ? m_daylight : m_standard);
}

std::int64_t Zone::changeAfter(std::int64_t instant) const {
  std::int64_t best = instant;
  for (std::int64_t year = readingAt(instant).year; m_changes && year < 2100; ++year) {
    for (const std::int64_t change : {springIn(year), autumnIn(year)}) {
      if (change > instant && (best == instant || change < best)) best = change;
    }
    if (best != instant) break;
  }
  return best;
}

}  // namespace simulation
