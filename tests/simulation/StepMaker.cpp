#include "simulation/StepMaker.h"

#include <algorithm>
#include <vector>

#include "simulation/Reference.h"

namespace simulation {
namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kSecondsOfHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kSecondsOfHour;
constexpr std::int64_t kLastMoment = 2147500000 * kSecond;

using Words = Lines;

struct Weighted {
  int weight;
  Act act;
};
constexpr Weighted kActs[] = {
    {220, Act::pass},      {90, Act::next},        {60, Act::jump},         {240, Act::set},
    {10, Act::get},        {15, Act::reset},       {80, Act::deviceValue},  {10, Act::outsideStore},
    {60, Act::ask},        {8, Act::invalidCall},  {30, Act::observe},      {25, Act::unobserve},
    {35, Act::setTime},    {35, Act::setDate},     {20, Act::setSeconds},   {6, Act::saveTime},
    {50, Act::report},     {15, Act::jack},        {12, Act::storeRefuses}, {6, Act::storeSilent},
    {6, Act::launchFails}, {6, Act::lookupsFail},  {10, Act::service},      {3, Act::mayReset},
    {3, Act::logLevel},    {8, Act::fallbackFile}, {3, Act::idle},          {15, Act::restart}};

const Words kKeys = words(
    "simple-time|simple-date|sntp-addr|sntp-tz-offset|sntp-tz-offset|daylight-save|"
    "daylight-save-zone-index|daylight-save-zone-id|auto-daylight-save||Time|last-restart-date");
const Words kFormats = words("0|1|2|0|1|2|3|-1||1x| 2|abc|99999999999");
const Words kFlags = words("true|false|true|false|TRUE|1||true ");
const Words kMinutes = words("60|60|30|0|-60|120|20|1440|45|90|2000000000|-2000000000|abc|");
const Words kSecrets =
    words("|secret|a & b < c|two\nlines|bell\x07|\xc3\xa9|]]>|\"quoted\"| |\tab\r\n");
const Words kOffsets = words(
    "0|1|-5|5.5|-3.5|5.75|12.5|-12.5|12.75|19800|-18000||abc| 2|+3|0.5|-0.5|0.25|-0.75|nan|7200|"
    "0.001|45000000|-45000000|8.1|50400|90|1,5");
const Words kSimpleTimes =
    words("|???|7:30|1|12|12:|99:99|-1:-5| 9: 5|ab:cd|12.30|123456|23:59|00:00");
const Words kSimpleDates = words(
    "|???|1.1|32.01.2024|1234567890|01.01|29.02.2023|2024-1-1|12/31/|01.01.-5|00.00.0000|"
    "05.03.20249");
const Words kZoneNumbers = words("abc||15|-1|99999999999| 9|12x|4294967305");
const Words kUtcTexts = words(
    "|2024-02-30T00:00:00+00:00|2024-13-01T00:00:00+00:00|2024-01-01T24:00:00+00:00|"
    "2024-01-01T00:00:00|2024-01-01 00:00:00+00:00|2024-01-01T00:00:00+24:00|"
    "2016-12-31T23:59:60+00:00|2024-01-01T00:00:00+00:00 |2099-01-01T00:00:00+00:00|"
    "1969-12-31T00:00:00-00:30");
const Words kFallbackFiles = words(
    "|2020-01-01T00:00:00+00:0|2020-01-01T00:00:00+00:000|twenty-five-letters-here!|"
    " 2021-02-03T04:05:06+00:00 and more|2022-01-01T01:00:00+02:00\n");
const Words kObservers = words("Ann|Bob|Eve|nobody|peer one|peer two|stranger");
const Words kStartZones = words("||LOC-13:00|LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00");

// Keys and values of the device, and of the store.
const Words kDeviceValues = words(
    "interface-status=up|interface-status=up|interface-status=down|interface-status=UP|"
    "interface-status=up to now|dhcp-enabled=true|dhcp-enabled=false|mac-addr=0001E3A1B2C3|"
    "mac-addr=0001e3a1b2c4|mac-addr=00:01:E3:A1:B2|mac-addr=0001E3A1B2CX|backlight=on|"
    "mobility-user-data-update=all|mobility-user-data-update=unmanaged|"
    "mobility-user-data-update=managed|related-software-type=Velmora SIP|"
    "related-software-type=Velmora QEX|related-software-type=Velmora QEX|"
    "related-software-type=Velmora TDM|related-software-type=velmora qex");
const Words kOutside = words(
    "DateFormat=0|DateFormat=1|DateFormat=2|DateFormat=7|TimeFormat=0|TimeFormat=1|TimeFormat=x|"
    "TimezoneOffset=-3|DaylightSavingZoneIDDevice=16|DaylightSavingMinutes=30|QexTimeSource=1");

Words keyAndValue(const std::string& text) {
  return {text.substr(0, text.find('=')), text.substr(text.find('=') + 1)};
}

// The first change of the offset within a year after `instant`, or `instant` if there is none.
std::int64_t changeAfter(std::int64_t instant) {
  constexpr std::int64_t kStep = 20 * 86400;
  const auto offset = [](std::int64_t at) { return localAt(at).tm_gmtoff; };
  std::int64_t before = instant;
  while (before < instant + 19 * kStep && offset(before + kStep) == offset(instant))
    before += kStep;
  std::int64_t after = before + kStep;
  if (offset(after) == offset(instant)) return instant;
  while (after - before > 1) {
    const std::int64_t middle = (before + after) / 2;
    (offset(middle) == offset(instant) ? before : after) = middle;
  }
  return after;
}

}  // namespace

Step StepMaker::next(const Reference& reference) {
  std::int64_t all = 0;
  for (const Weighted& entry : kActs) all += entry.weight;
  std::int64_t drawn = m_chance.between(1, all);
  for (const Weighted& entry : kActs) {
    drawn -= entry.weight;
    if (drawn <= 0) return make(entry.act, reference);
  }
  return {Act::next};
}

// clang-format off
// NOLINTNEXTLINE(readability-function-size): one row for each act
Step StepMaker::make(Act act, const Reference& reference) {
  const auto onInThree = static_cast<std::int64_t>(m_chance.oneIn(3));
  switch (act) {
    case Act::pass: return {act, {passedMs()}};
    case Act::jump: return {act, {m_chance.oneIn(4) ? std::clamp(reference.wallMs() + m_chance.between(-kDay, kDay / 2), kDay, kLastMoment) : aroundMs()}};
    case Act::set: return makeSet(reference);
    case Act::get: return {act, {}, {m_chance.oneOf(kKeys)}};
    case Act::deviceValue: return {act, {}, keyAndValue(m_chance.oneOf(kDeviceValues))};
    case Act::outsideStore: return {act, {}, keyAndValue(m_chance.oneOf(kOutside))};
    case Act::ask: return {act, {m_chance.oneIn(3) ? m_chance.between(-1, 1) : within32(anySecond()), m_chance.between(-1, 60), m_chance.between(-1, 60), m_chance.between(-1, 60), m_chance.between(-1, 60), m_chance.between(-1, 60), m_chance.between(-5, 200)}, {utc()}};
    case Act::invalidCall: return {act, {}, {m_chance.oneOf(Words{"unknown", "garbage", "codec", "nobody"})}};
    case Act::observe:
    case Act::unobserve: return {act, {}, {m_chance.oneOf(kObservers)}};
    case Act::setTime: return setTime();
    case Act::setDate: return setDate();
    case Act::setSeconds: return {act, {m_chance.oneIn(12) ? m_chance.between(-2, 2) : within32(around())}, {caller()}};
    case Act::saveTime: return {act, {}, {caller()}};
    case Act::report: return report(reference);
    case Act::jack: return {act, m_chance.oneIn(2) ? std::vector<std::int64_t>{5, 1} : std::vector{m_chance.between(0, 6), m_chance.between(0, 2)}};
    case Act::storeRefuses:
    case Act::storeSilent:
    case Act::launchFails:
    case Act::lookupsFail: return {act, {onInThree}};
    case Act::service: return {act, {m_chance.oneIn(4) ? 0 : 1}, {m_chance.oneOf(kServices)}};
    case Act::mayReset: return {act, {1 - onInThree}, {m_chance.oneOf(Words{"date-format", "time-format"})}};
    case Act::logLevel: return {act, {m_chance.between(2, 6)}};
    case Act::fallbackFile: return {act, {}, {m_chance.oneIn(2) ? m_chance.oneOf(kFallbackFiles) : utcText(around())}};
    case Act::restart: return restart();
    default: return {act};
  }
}
// clang-format on

std::int64_t StepMaker::passedMs() {
  if (m_chance.oneIn(5)) return m_chance.between(1, 2);
  if (m_chance.oneIn(2)) return m_chance.between(1, 120) * (m_chance.oneIn(2) ? 41 : kSecond);
  if (m_chance.oneIn(40)) return m_chance.between(1, m_chance.oneIn(6) ? 21 * kDay : 4 * kDay);
  return m_chance.between(1, m_chance.oneIn(3) ? 12 * kSecondsOfHour : 90 * kMinute);
}

// An instant at which clocks often fail: midnight, a change of the offset, the end of a year, a
// leap day, a full hour.
std::int64_t StepMaker::momentMs() {
  const std::int64_t base = anySecond();
  tm local = localAt(base);
  const std::int64_t kind = m_chance.between(0, 5);
  if (kind <= 1) return changeAfter(base) * kSecond;
  if (kind == 2) local.tm_mon = 12;
  if (kind == 3) local.tm_mon = 1, local.tm_year = local.tm_year / 4 * 4;
  if (kind == 2 || kind == 3)
    local.tm_mday = static_cast<int>(kind == 2 ? 1 : m_chance.between(29, 30));
  local.tm_hour = kind == 5 ? local.tm_hour + 1 : 24;
  local.tm_min = local.tm_sec = 0;
  const std::int64_t offset = local.tm_gmtoff;
  return (timegm(&local) - offset) * kSecond;
}

std::int64_t StepMaker::aroundMs() {
  std::int64_t ms = momentMs();
  ms -= m_chance.oneIn(3) ? m_chance.between(-2, 2) * kSecond
                          : m_chance.between(1, 2 * kSecondsOfHour);
  if (m_chance.oneIn(3)) ms -= m_chance.between(0, 999);
  return std::clamp(ms, kDay, kLastMoment);
}

std::string StepMaker::caller() {
  return m_chance.oneOf(Words{"Ann", "peer one", "stranger"});
}

Step StepMaker::setTime() {
  const std::int64_t odd = m_chance.oneIn(4) ? 100 : 0;
  const std::int64_t late = m_chance.oneIn(2) ? 50 : 0;
  const std::int64_t hour = m_chance.between(-odd, 23 + odd);
  const std::int64_t minute = late > 0 ? 59 : m_chance.between(-odd, 59 + odd);
  return {Act::setTime, {hour, minute, m_chance.between(late - odd, 60 + odd)}, {caller()}};
}

Step StepMaker::setDate() {
  const tm day = localAt(around());
  std::vector<std::int64_t> date{day.tm_mday, day.tm_mon + 1, day.tm_year + 1900};
  if (m_chance.oneIn(3)) date[2] = day.tm_year % 30;
  if (m_chance.oneIn(5)) date[2] = m_chance.oneOf(std::vector<int>{1969, 1970, 2037, 2038, 38, 99});
  if (m_chance.oneIn(4))
    date = {m_chance.between(-400, 400), m_chance.between(-20, 40), m_chance.between(-10, 30)};
  return {Act::setDate, date, {caller()}};
}

Step StepMaker::report(const Reference& reference) {
  if (m_chance.oneIn(6)) return {Act::report, {0, 0}};
  const std::int64_t now = std::clamp(reference.wallMs(), kDay, kLastMoment) / kSecond;
  const std::int64_t reported = m_chance.oneIn(2) ? around() : now + m_chance.between(-2, 2);
  return {Act::report, {reported, m_chance.oneIn(8) ? 0 : 1}};
}

Step StepMaker::makeSet(const Reference& reference) {
  const std::string key =
      m_chance.oneIn(2) ? m_chance.oneOf(kKeys) : m_chance.oneOf(kManagementKeys);
  return {Act::set, {}, {key, valueFor(key, reference)}};
}

std::string StepMaker::valueFor(const std::string& key, const Reference& reference) {
  if (key == "time") return utc();
  if (key == "date-format" || key == "time-format" || key == "time-source")
    return m_chance.oneOf(kFormats);
  if (key == "sntp-addr") return m_chance.oneOf(kAddresses).text;
  if (key == "daylight-save" || key == "auto-daylight-save") return m_chance.oneOf(kFlags);
  if (key == "daylight-save-minutes") return m_chance.oneOf(kMinutes);
  if (key == "sntp-tz-offset") {
    return m_chance.oneIn(2) ? m_chance.oneOf(kOffsets)
                             : print("%g", static_cast<double>(m_chance.between(-50, 50)) / 4.0);
  }
  if (key == "simple-time")
    return m_chance.oneIn(2) ? m_chance.oneOf(kSimpleTimes) : timeText(localAt(around()), 0);
  if (key == "simple-date") {
    const int format = m_chance.oneIn(10) ? 0 : reference.number("DateFormat");
    return m_chance.oneIn(4) || format < 0 || format > 2
               ? m_chance.oneOf(kSimpleDates)
               : dateText(localAt(around()), kSimpleDateMasks[format]);
  }
  if (key == "daylight-save-zone-index" || key == "daylight-save-zone-id") {
    return m_chance.oneIn(6) ? m_chance.oneOf(kZoneNumbers)
                             : std::to_string(m_chance.between(0, kZones - 1));
  }
  return m_chance.oneOf(kSecrets);
}

std::string StepMaker::utc() {
  if (m_chance.oneIn(4)) return m_chance.oneOf(kUtcTexts);
  std::string text = utcText(around());
  if (m_chance.oneIn(2)) return text;
  const char sign = m_chance.oneIn(2) ? '-' : '+';
  const std::int64_t minutes = m_chance.between(0, 15 * 60 - 1);
  text.resize(19);
  return text +
         print("%c%02d:%02d", sign, static_cast<int>(minutes / 60), static_cast<int>(minutes % 60));
}

Step StepMaker::restart() {
  std::int64_t missing = 0;
  for (const std::int64_t bit : {1, 2, 4, 8}) missing |= m_chance.oneIn(12) ? bit : 0;
  const std::int64_t wall = m_chance.oneIn(2) ? m_chance.between(0, kDay) : aroundMs();
  return {Act::restart,
          {m_chance.oneIn(2) ? 1 : 0, m_chance.between(0, 6), missing, wall},
          {m_chance.oneOf(kStartZones)}};
}

}  // namespace simulation
