// The reference's settings, as the texts of the store, and the sixteen management keys.

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "simulation/Reference.h"

namespace simulation {
namespace {

constexpr const char* kSimpleTimeMask = "HH:MM";

const Setting* settingOf(const std::string& key) {
  for (const Setting& setting : kSettings)
    if (!key.empty() && key == setting.key) return &setting;
  return nullptr;
}

bool isZone(int number) {
  return number >= 0 && number < kZones;
}

// The store's document cannot hold other control characters.
bool isStorable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n' || c == '\r';
  });
}

// The value in memory after loading `text`, as a text; an offset with all its digits.
std::string loaded(const Setting& setting, const std::string& text) {
  switch (setting.kind) {
    case Setting::number:
    case Setting::zone:
      return std::to_string(leadingNumber(text));
    case Setting::flag:
      return text == "true" ? "true" : "false";
    case Setting::offset:
      return print("%.9g", static_cast<float>(std::strtod(text.c_str(), nullptr)));
    default:
      return text;
  }
}

float hoursOf(const std::string& text) {
  const auto hours = static_cast<float>(std::strtod(text.c_str(), nullptr));
  return hours < -12.5F || hours > 12.5F ? hours / 3600.0F : hours;
}

std::string zoneName(int zone) {
  std::string rest = kZoneNames;
  for (; isZone(zone) && zone > 0; --zone) rest.erase(0, rest.find(';') + 1);
  return isZone(zone) ? rest.substr(0, rest.find(';')) : "";
}

}  // namespace

void Reference::applyToManagement(const Step& step) {
  if (step.act == Act::get) {
    const std::string shown = value(step.texts[0]).value_or("refused");
    if (step.texts[0] == "simple-date" && shown.empty())
      logError("getData: Invalid Date Format.\n");
    m_journal.add("-> " + shown);
  }
  if (step.act == Act::set) answer(set(step.texts[0], step.texts[1]));
  if (step.act == Act::reset) reset();
}

// A setting that is not in the store gets its default.
void Reference::load(const Setting& setting) {
  const bool readable = m_hasStore && !m_trouble[Act::storeSilent] && m_store.count(setting.stored);
  const char* const byDefault = m_big ? setting.byDefaultOnBig : setting.byDefault;
  m_memory[setting.stored] = loaded(setting, readable ? m_store[setting.stored] : byDefault);
}

void Reference::reloadFormats() {
  for (const char* const key : {"date-format", "time-format"}) {
    const Setting& setting = *settingOf(key);
    const std::string before = m_memory[setting.stored];
    load(setting);
    if (m_memory[setting.stored] != before) reportValue(key, m_memory[setting.stored]);
  }
}

// Stores the text first; memory changes only if that succeeds.
bool Reference::write(const Setting& setting, const std::string& value) {
  if (!m_hasStore || !isStorable(value)) return false;
  const bool refused = m_trouble[Act::storeRefuses];
  m_journal.add(std::string("store ") + setting.stored + "=" + value + (refused ? " refused" : ""));
  if (refused) return false;
  m_store[setting.stored] = value;
  m_memory[setting.stored] = loaded(setting, value);
  return true;
}

// A number too large for hours is in seconds. An unchanged value is not stored again.
bool Reference::putOffset(const Setting& setting, const std::string& value) {
  const float hours = hoursOf(value);
  const std::string exact = print("%.9g", hours);
  if (exact == m_memory[setting.stored] && exact != "nan") return true;
  if (!write(setting, print("%g", hours))) return false;
  m_memory[setting.stored] = exact;
  return true;
}

bool Reference::put(const Setting& setting, const std::string& value) {
  switch (setting.kind) {
    case Setting::flag:
      return (value == "true" || value == "false") && write(setting, value);
    case Setting::address:
      return addressOf(value).kind != Address::wrong && value != server() && write(setting, value);
    case Setting::offset:
      return !value.empty() && putOffset(setting, value);
    case Setting::zone:
      return isZone(leadingNumber(value)) && write(setting, std::to_string(leadingNumber(value)));
    default:
      return write(setting, value);
  }
}

bool Reference::hasServer() const {
  const Address::Kind kind = addressOf(server()).kind;
  return kind != Address::none && kind != Address::wrong;
}

std::optional<std::string> Reference::value(const std::string& key) const {
  const tm local = localAt(now());
  const int zone = number("DaylightSavingZoneIDDevice");
  const std::size_t format = static_cast<unsigned int>(number("DateFormat"));
  if (key == "time") return utcText(now());
  if (key == "simple-time") return timeText(local, 0);
  if (key == "simple-date") return dateText(local, format < 3 ? kSimpleDateMasks[format] : "");
  if (key == "daylight-save-zone-list") return kZoneNames;
  if (key == "daylight-save-zone-index") return std::to_string(isZone(zone) ? zone : -1);
  if (key == "daylight-save-zone-text") return zoneName(zone);
  const Setting* const setting = settingOf(key);
  if (setting == nullptr) return std::nullopt;
  const std::string& text = m_memory.at(setting->stored);
  return setting->kind == Setting::offset ? print("%g", std::strtod(text.c_str(), nullptr)) : text;
}

// A text that is too short is refused without a security record.
bool Reference::set(const std::string& key, const std::string& value) {
  bool accepted = false;
  try {
    accepted = apply(key, value);
  } catch (const std::out_of_range&) {
    return false;
  }
  m_securityKnown = m_securityKnown || has(securityService);
  if (m_securityKnown) {
    m_journal.add("security " + std::to_string(floorSeconds(wallMs())) + " 4 1 5 3 " +
                  (accepted ? "done" : "failed") + " ClockSettings set data " + key + "(" + value +
                  ") by \"\" from \"\"");
  }
  return accepted;
}

bool Reference::apply(const std::string& key, const std::string& value) {
  if (key == "time" || key == "simple-time" || key == "simple-date")
    return applyReading(key, value);
  const bool byIndex = key == "daylight-save-zone-index";
  const Setting* const setting = settingOf(byIndex ? "daylight-save-zone-id" : key);
  return setting != nullptr && applySetting(*setting, value, byIndex);
}

bool Reference::applySetting(const Setting& setting, const std::string& value, bool byIndex) {
  const bool accepted = put(setting, value);
  if (byIndex && isZone(leadingNumber(value)))
    reportValue("daylight-save-zone-id", std::to_string(leadingNumber(value)));
  const std::string key = setting.key;
  if (key == "sntp-addr" || key == "ntp-secret") {
    if (accepted) startClient();
  } else if (accepted && key != "date-format" && key != "time-format") {
    arm(zoneDue, 1);
  }
  if (key == "sntp-addr" && m_managed) {
    const bool none = value.empty() || value == "0.0.0.0" || value == "::";
    m_journal.add(std::string("item state time ") + (none ? "0" : "4"));
  }
  return accepted;
}

bool Reference::applyReading(const std::string& key, const std::string& value) {
  const auto local = localOf(value);
  const std::size_t format = static_cast<unsigned int>(number("DateFormat"));
  const std::string mask = key == "simple-time" ? kSimpleTimeMask
                           : format < 3         ? kSimpleDateMasks[format]
                                                : "";
  const auto part = [&](char letter) {
    return mask.find(letter) == std::string::npos ? 0 : maskedNumber(value, mask, letter);
  };
  if (key == "time" ? !local.has_value() : value.empty() || value == "???") return false;
  const int numbers[] = {part('d'), part('m'), part('y'), part('H'), part('M')};
  if (findPhysical()) m_journal.add("begin clock change");
  bool accepted = false;
  if (key == "time") {
    accepted = setDate(local->tm_mday, local->tm_mon + 1, local->tm_year + 1900) &&
               setTime(local->tm_hour, local->tm_min, local->tm_sec);
  } else {
    accepted = key == "simple-date" ? setDate(numbers[0], numbers[1], numbers[2])
                                    : setTime(numbers[3], numbers[4], 0);
  }
  if (m_physicalKnown) m_journal.add("end clock change");
  return accepted;
}

void Reference::reset() {
  bool done = false;
  for (const char* const key : {"date-format", "time-format"}) {
    const Setting& setting = *settingOf(key);
    const std::string byDefault = m_big ? setting.byDefaultOnBig : setting.byDefault;
    const bool mayReset = m_mayReset.count(key) == 0 || m_mayReset[key];
    if (!m_managed || !mayReset || m_memory[setting.stored] == byDefault) continue;
    set(key, byDefault);
    reportValue(key, byDefault);
    done = true;
  }
  answer(done);
}

void Reference::reportValue(const std::string& key, const std::string& value) {
  if (m_managed) m_journal.add("report " + key + "=" + value);
}

}  // namespace simulation
