#include "runtime/ChangeRecorder.h"

#include <exception>
#include <string_view>
#include <utility>

#include "DataStorage.h"
#include "Logging.h"
#include "base/InstantText.h"
#include "base/LogLevels.h"
#include "base/Origin.h"
#include "framework/PluginThread.h"
#include "framework/StateFolder.h"

namespace host {
namespace {

using Nanoseconds = VirtualClock::Nanoseconds;
using Setter = VirtualClock::Setter;
using std::chrono::floor;
using std::chrono::seconds;

// On disk: keys in the store.
constexpr std::string_view kSavedTime = "FallbackDateTime";
constexpr std::string_view kSecret = "NTPsharedSecret";

// A correction by the time server or another program below this is no change: the telephone shows
// no parts of seconds, and hourly corrections would push the other changes out of the history.
constexpr VirtualClock::Nanoseconds kCorrection = seconds(1);

// stored: the store has a saved time.
const char* sourceOf(Setter setter, bool stored = true) {
  switch (setter) {
    case Setter::savedTime:
      return stored ? "saved time" : "built-in start time";
    case Setter::seconds:
      return "call setTimeInt";
    case Setter::hand:
      return "by hand";
    case Setter::timeServer:
      return "time server";
    case Setter::program:
      return "another program";
    case Setter::jump:
      break;
  }
  return "clock jump";
}

bool isOfTheService(Setter setter) {
  return setter == Setter::savedTime || setter == Setter::seconds || setter == Setter::hand;
}

// The zone in the text of setupTZ.sh.
std::string zoneIn(const std::string& script) {
  constexpr std::string_view kBefore = "export TZ=";
  const std::size_t found = script.find(kBefore);
  if (found == std::string::npos) return {};
  const std::size_t begin = found + kBefore.size();
  return script.substr(begin, script.find('\n', begin) - begin);
}

std::string causeText() {
  const Cause cause = causeHere();
  std::string text(cause.act);
  if (!cause.object.empty()) text.append(1, ' ').append(cause.object);
  return text;
}

thread_local std::uint64_t t_wallSets = 0;

}  // namespace

std::uint64_t wallSetsHere() {
  return t_wallSets;
}

ChangeRecorder::ChangeRecorder(VirtualClock& clock, DataAccess& store, History& history)
    : m_clock(clock),
      m_store(store),
      m_history(history),
      m_knownAtZero(clock.wall() - clock.uptime()) {
  clock.onWallSet([this](Nanoseconds from, Nanoseconds to, Setter setter) {
    ++t_wallSets;
    try {
      wallSet(from, to, setter);
    } catch (const std::exception&) {
      // No memory for the record.
    }
  });
  onStored([this](const std::string& name, const std::string& before, const std::string& after) {
    try {
      fileStored(name, before, after);
    } catch (const std::exception&) {
      // No memory for the record.
    }
  });
}

ChangeRecorder::~ChangeRecorder() {
  m_clock.onWallSet({});
  onStored({});
}

bool ChangeRecorder::setItem(const std::string& schema, const std::string& key,
                             const std::string& value) {
  if (key == kSavedTime) {
    if (onPluginThread()) {
      const MutexLock lock(m_mutex);
      m_origin.report = value;
      m_origin.reported = m_clock.uptime();
      if (!m_clock.setByHand()) m_origin.source = sourceOf(Setter::timeServer);
    }
    return m_store.setItem(schema, key, value);
  }
  const std::string before = m_store.getItem(schema, key).value_or("");
  if (!m_store.setItem(schema, key, value)) return false;
  if (before != value) settingStored(key, before, value);
  return true;
}

// Must not throw: the value is stored, so the set has succeeded.
void ChangeRecorder::settingStored(const std::string& key, const std::string& before,
                                   const std::string& after) try {
  Change change = changeOf(key, "device");
  const bool secret = key == kSecret;
  change.from = secret && !before.empty() ? "(hidden)" : before;
  change.to = secret ? "(hidden)" : after;
  {
    const MutexLock lock(m_mutex);
    m_lastSetting = change;
  }
  m_history.add(std::move(change));
} catch (const std::exception&) {
  // No memory for the record.
}

std::optional<std::string> ChangeRecorder::getItem(const std::string& schema,
                                                   const std::string& key) {
  return m_store.getItem(schema, key);
}

bool ChangeRecorder::hasSavedTime() const {
  return m_store.getItem(DASUtilsStrings::ClockSettingsSchema, std::string(kSavedTime)).has_value();
}

ClockOrigin ChangeRecorder::origin() const {
  const MutexLock lock(m_mutex);
  return m_origin;
}

void ChangeRecorder::checkMachineClock() {
  const Nanoseconds uptime = m_clock.uptime();
  const Nanoseconds now = m_clock.wall();
  Nanoseconds known;
  {
    const MutexLock lock(m_mutex);
    known = m_knownAtZero + uptime;
  }
  if (std::chrono::abs(now - known) >= kCorrection) wallSet(known, now, Setter::program);
}

Change ChangeRecorder::changeOf(const std::string& what, const char* otherwise) const {
  Change change;
  change.time = floor<seconds>(m_clock.wall());
  change.what = what;
  change.cause = causeText();
  if (change.cause.empty()) change.cause = otherwise;
  change.who = originHere().empty() ? "device" : originHere();
  return change;
}

// A time that was set by hand no longer follows the system time, so only the next set by hand
// changes what the telephone shows.
void ChangeRecorder::wallSet(Nanoseconds from, Nanoseconds to, Setter setter) {
  const bool small = setter == Setter::timeServer && std::chrono::abs(to - from) < kCorrection;
  const char* const source = sourceOf(setter, setter != Setter::savedTime || hasSavedTime());
  Change change = changeOf("clock", source);
  change.from = instantText(floor<seconds>(from));
  change.to = instantText(floor<seconds>(to));
  const bool changes = !small && change.from != change.to;
  {
    const MutexLock lock(m_mutex);
    m_knownAtZero = to - m_clock.uptime();
    if (changes) m_origin.systemChange = change;
    if (setter == Setter::hand || !m_clock.setByHand()) {
      m_origin.source = source;
      if (changes) {
        m_origin.change = change;
        m_origin.changed = m_clock.uptime();
      }
    }
  }
  if (!changes) return;
  if (!isOfTheService(setter)) {
    logAppUni("clockhost", kLogNote, __FILE__, __LINE__,
              "the system time was changed without the service, from %s to %s: %s, %s",
              change.from.c_str(), change.to.c_str(), change.cause.c_str(), change.who.c_str());
  }
  m_history.add(std::move(change));
}

// The zone changes because a setting did, so the cause is that of the last setting.
void ChangeRecorder::fileStored(const std::string& name, const std::string& before,
                                const std::string& after) {
  if (name != "setupTZ.sh") return;
  Change change = changeOf("zone", "start");
  {
    const MutexLock lock(m_mutex);
    if (!m_lastSetting.cause.empty()) {
      change.cause = m_lastSetting.cause;
      change.who = m_lastSetting.who;
    }
  }
  change.from = zoneIn(before);
  change.to = zoneIn(after);
  if (change.from != change.to) m_history.add(std::move(change));
}

}  // namespace host
