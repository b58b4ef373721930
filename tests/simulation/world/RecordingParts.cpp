#include "simulation/world/RecordingParts.h"

#include "DataStorage.h"
#include "ManageableData.h"
#include "simulation/model/Texts.h"

namespace simulation {
namespace {

std::string keyAndValue(ManageableData& record) {
  std::string value = "nothing";
  record.interogate(record.getRootId(), value);
  return record.getRootId() + "=" + value;
}

}  // namespace

bool RecordingManagement::registerAgent(const std::string& agentId, MgmtAgentIfc* agent) {
  m_journal.add("agent " + agentId);
  return LocalManagement::registerAgent(agentId, agent);
}

bool RecordingManagement::setData(ManageableData& record) {
  m_journal.add("management " + keyAndValue(record));
  return LocalManagement::setData(record);
}

bool RecordingManagement::observeData(const std::string& key, MgmtAgentIfc* agent) {
  m_journal.add("observes " + key);
  return LocalManagement::observeData(key, agent);
}

bool RecordingManagement::reportDataChanged(ManageableData& record) {
  m_journal.add("report " + keyAndValue(record));
  return LocalManagement::reportDataChanged(record);
}

void RecordingManagement::setItemState(ManageableData& record, int state) {
  m_journal.add("item " + record.getRootId() + " is " + std::to_string(state));
  LocalManagement::setItemState(record, state);
}

void RecordingPhysical::subscribe(physicalEventObserver* observer,
                                  const std::vector<PhysDefs::SubscriptionGrp>& groups) {
  for (const PhysDefs::SubscriptionGrp& group : groups) {
    m_journal.add(
        print("subscribes to %d %d %d", group.other.kind, group.other.first, group.other.last));
  }
  PhysicalInterface::subscribe(observer, groups);
}

void RecordingPhysical::beginClockChange() {
  m_journal.add("clock change begins");
  PhysicalInterface::beginClockChange();
}

void RecordingPhysical::endClockChange() {
  m_journal.add("clock change ends");
  PhysicalInterface::endClockChange();
}

void RecordingSecurity::init(Context&) {}

void RecordingSecurity::shutdown() {}

void RecordingSecurity::record(time_t time, int facility, int severity, int eventClass,
                               int eventCode, bool failure, const std::string& text,
                               const std::string& subject, const std::string& origin) {
  m_journal.add(print("security %lld %d %d %d %d %s ", static_cast<long long>(time), facility,
                      severity, eventClass, eventCode, failure ? "failed" : "done") +
                text + " by \"" + subject + "\" from \"" + origin + "\"");
}

void FaultyStore::init(Context&) {}

void FaultyStore::shutdown() {}

bool FaultyStore::setItem(const std::string& schema, const std::string& key,
                          const std::string& value) {
  if (powerless) return false;
  m_journal.add("store " + key + "=" + value + (refuses ? " refused" : ""));
  return !refuses && m_items.setItem(schema, key, value);
}

std::optional<std::string> FaultyStore::getItem(const std::string& schema, const std::string& key) {
  if (silent) return std::nullopt;
  return m_items.getItem(schema, key);
}

void FaultyStore::putAside(const std::string& key, const std::string& value) {
  static_cast<void>(m_items.setItem(DASUtilsStrings::ClockSettingsSchema, key, value));
}

void RecordingObserver::timezoneChangeEvent(std::string timezone) {
  m_journal.add(m_name + " hears zone " + timezone);
}

void RecordingObserver::timeChangeEvent(int hours, int minutes, int seconds) {
  m_journal.add(m_name + print(" hears time %d:%d:%d", hours, minutes, seconds));
}

void RecordingObserver::dateChangeEvent(int day, int month, int year) {
  m_journal.add(m_name + print(" hears date %d.%d.%d", day, month, year));
}

void RecordingObserver::alarmClockEvent(int alarm) {
  m_journal.add(m_name + print(" hears alarm %d", alarm));
}

void RecordingLog::write(const host::LogEntry& entry) {
  if (entry.systemLog) m_journal.add("system log " + entry.text);
  if (entry.systemLog || entry.level > 2 || entry.component.rfind("ClockService", 0) != 0) return;
  m_journal.add("log " + std::to_string(entry.level) + " " + entry.component + ": " + entry.text);
}

}  // namespace simulation
