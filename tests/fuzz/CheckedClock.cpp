#include "fuzz/CheckedClock.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>

#include "ClientUtils.h"
#include "ClockUtils.h"
#include "NetHelper.h"
#include "base/Ascii.h"
#include "framework/XmlText.h"
#include "fuzz/Property.h"

namespace fuzz {
namespace {

// The kind of a key's values.
enum class Kind { none, readOnly, text, number, flag, offset, zone, server, moment };

struct Key {
  const char* name;
  Kind kind;
  const char* storedAs;  // storage key; null: the value is computed
};

constexpr Key kKeys[] = {
    {"time", Kind::moment, nullptr},
    {"simple-time", Kind::moment, nullptr},
    {"simple-date", Kind::moment, nullptr},
    {"date-format", Kind::number, "DateFormat"},
    {"time-format", Kind::number, "TimeFormat"},
    {"sntp-addr", Kind::server, "SNTPaddress"},
    {"ntp-secret", Kind::text, "NTPsharedSecret"},
    {"sntp-tz-offset", Kind::offset, "TimezoneOffset"},
    {"daylight-save", Kind::flag, "DaylightSavingActive"},
    {"daylight-save-minutes", Kind::number, "DaylightSavingMinutes"},
    {"time-source", Kind::number, "QexTimeSource"},
    {"daylight-save-zone-list", Kind::readOnly, nullptr},
    {"daylight-save-zone-index", Kind::zone, "DaylightSavingZoneIDDevice"},
    {"daylight-save-zone-text", Kind::readOnly, nullptr},
    {"daylight-save-zone-id", Kind::zone, "DaylightSavingZoneIDDevice"},
    {"auto-daylight-save", Kind::flag, "AutoDaylightSavingEnabledDevice"},
};
static_assert(std::size(kKeys) == 16);

Kind kindOf(const std::string& name) {
  const auto* const key = std::find_if(std::begin(kKeys), std::end(kKeys),
                                       [&](const Key& each) { return each.name == name; });
  return key == std::end(kKeys) ? Kind::none : key->kind;
}

// As strtol reads it where long has 32 bits, which it has on the device.
std::int64_t leadingNumber(const std::string& text) {
  const std::int64_t number = std::strtoll(text.c_str(), nullptr, 10);
  return std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max());
}

bool isServer(const std::string& text) {
  return (NetHelper::verifyIpAddress(text, false) != 0 && text.front() != '[') ||
         ClientUtils::validGlobalHostname(text);
}

bool isZone(std::int64_t number) {
  return number >= 0 && number <= 14;
}

// Whether a set must be accepted; empty if that depends on the present time.
std::optional<bool> isAccepted(const std::string& key, const std::string& value,
                               const std::string& present) {
  switch (kindOf(key)) {
    case Kind::none:
    case Kind::readOnly:
      return false;
    case Kind::text:
    case Kind::number:
      return host::isXmlText(value);
    case Kind::flag:
      return value == "true" || value == "false";
    case Kind::offset:
      return !value.empty();
    case Kind::zone:
      return isZone(leadingNumber(value));
    case Kind::server:
      return value != present && isServer(value);
    case Kind::moment:
      break;
  }
  return std::nullopt;
}

// The value ends before the fixed positions of its parts, which depend on the date format. Only
// such a set throws, and so leaves no security record.
bool isTooShort(const std::string& key, const std::string& value, const std::string& dateFormat) {
  if (value.empty() || value == "???") return false;
  if (key == "simple-time") return value.size() < 3;
  if (key != "simple-date") return false;
  if (dateFormat == "0" || dateFormat == "2") return value.size() < 6;
  return dateFormat == "1" && value.size() < 8;
}

std::string zoneInForce() {
  const char* const zone = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe): nothing else runs
  return zone == nullptr ? "" : zone;
}

}  // namespace

CheckedClock::CheckedClock() {
  m_telephone.switchOn();
}

CheckedClock::Texts CheckedClock::settings() {
  Texts texts;
  for (const Key& key : kKeys) {
    if (key.storedAs == nullptr) continue;
    texts[key.name] = m_telephone.managed(key.name);
    texts[key.storedAs] = m_telephone.stored(key.storedAs);
  }
  return texts;
}

void CheckedClock::set(const std::string& key, const std::string& value) {
  const Texts before = settings();
  const std::size_t records = m_telephone.security.count();
  const bool accepted = m_telephone.manage(key, value);
  const auto expected = isAccepted(key, value, before.at("sntp-addr"));
  hold(!expected || accepted == *expected, "a key accepts exactly its valid values", key);
  if (isTooShort(key, value, before.at("date-format"))) {
    hold(!accepted && m_telephone.security.count() == records, "a set that throws leaves no record",
         key);
  } else {
    holdRecord(key, value, accepted, records);
  }
  if (kindOf(key) == Kind::server) holdItemState(value);
  if (accepted) return holdValue(key, value);
  hold(settings() == before, "a refusal changes nothing", key);
}

void CheckedClock::holdRecord(const std::string& key, const std::string& value, bool accepted,
                              std::size_t before) {
  hold(m_telephone.security.count() == before + 1, "each other set leaves one record", key);
  const auto record = m_telephone.security.last();
  hold(record.failure != accepted, "a record has the outcome", key);
  hold(record.text == "ClockSettings set data " + key + "(" + value + ")",
       "a record has key and value", record.text);
}

// After an accepted set.
void CheckedClock::holdValue(const std::string& key, const std::string& value) {
  const std::string now = m_telephone.managed(key);
  switch (kindOf(key)) {
    case Kind::number:
    case Kind::zone:
      return hold(now == std::to_string(leadingNumber(value)),
                  "the value is the number that the text begins with", now);
    case Kind::text:
    case Kind::flag:
    case Kind::server:
      return hold(now == value, "the value is the text that was set", value);
    case Kind::offset:
      return hold(m_telephone.manage(key, now), "an offset can be written back", now);
    default:
      if (key == "simple-time") holdTimeOfDay(value);
  }
}

// Only without daylight saving, which skips an hour in spring, and far from the clock's limits.
void CheckedClock::holdTimeOfDay(const std::string& value) {
  constexpr std::int64_t kWeek = 7 * 86400;
  const std::int64_t now = m_telephone.wallSeconds();
  if (!host::hasShape(value, "00:00") || value >= "24:00" || value[3] >= '6') return;
  if (m_telephone.managed("daylight-save") == "true") return;
  if (now < kWeek || now > std::numeric_limits<std::int32_t>::max() - kWeek) return;
  hold(m_telephone.managed("simple-time") == value, "the time of day is the one that was set",
       value);
}

void CheckedClock::holdItemState(const std::string& server) {
  const bool none = server.empty() || server == "0.0.0.0" || server == "::";
  hold(m_telephone.management.itemState("time") == (none ? 0 : 4),
       "the state of \"time\" follows the requested server", server);
}

void CheckedClock::get(const std::string& key) {
  std::string value = "untouched";
  const bool known = m_telephone.management.get(key, value);
  hold(known == (kindOf(key) != Kind::none), "exactly the known keys can be read", key);
  hold(known || value == "untouched", "an unknown key leaves the value unchanged", key);
  holdReadings();
}

// The computed values are valid, whatever the settings are.
void CheckedClock::holdReadings() {
  const std::string utc = m_telephone.managed("time");
  const std::string date = m_telephone.managed("simple-date");
  const std::string time = m_telephone.managed("simple-time");
  const std::string format = m_telephone.managed("date-format");
  tm record{};
  hold(ClockUtils::convertTimeStringToTimeStruct(utc, record), "the time is a UTC text", utc);
  hold(host::hasShape(time, "00:00") && time < "24:00", "the time of day is valid", time);
  const bool shown = format == "0" || format == "1" || format == "2";
  hold(date.size() == (shown ? 10U : 0U), "a date has its format's length", date);
  hold(zoneInForce().size() < 50, "a zone fits its buffer", zoneInForce());
}

void CheckedClock::reset() {
  const bool wasDefault =
      m_telephone.managed("date-format") == "0" && m_telephone.managed("time-format") == "0";
  hold(m_telephone.management.reset() == !wasDefault,
       "a reset returns whether it changed a setting");
  hold(m_telephone.managed("date-format") == "0" && m_telephone.managed("time-format") == "0",
       "a reset restores the default of both formats");
}

void CheckedClock::changeDevice(const std::string& key, const std::string& value) {
  m_telephone.management.setValue(key, value);
}

void CheckedClock::restart() {
  const Texts before = settings();
  m_telephone.switchOff();
  m_telephone.switchOn();
  hold(settings() == before, "settings survive a restart");
}

}  // namespace fuzz
