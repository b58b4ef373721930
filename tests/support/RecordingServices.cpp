#include "support/RecordingServices.h"

#include "DataStorage.h"
#include "ManageableData.h"

namespace support {
namespace {

std::string keyAndValue(const ManageableData& record) {
  std::string value;
  const std::string key = record.getRootId();
  return key + "=" + (record.interogate(key, value) ? value : "(none)");
}

}  // namespace

PhysDefs::hardwareSubVariant RecordingPhysical::getHardwareSubVariant() {
  if (m_queries == Queries::recorded) m_journal.add("hardware variant?");
  return PhysicalInterface::getHardwareSubVariant();
}

void RecordingPhysical::subscribe(physicalEventObserver* observer,
                                  const std::vector<PhysDefs::SubscriptionGrp>& groups) {
  std::string line = "subscribe";
  for (const auto& group : groups) {
    line += " (" + std::to_string(group.other.kind) + "," + std::to_string(group.other.first) +
            "," + std::to_string(group.other.last) + ")";
  }
  m_journal.add(line);
  PhysicalInterface::subscribe(observer, groups);
}

bool RecordingManagement::registerAgent(const std::string& agentId, MgmtAgentIfc* newAgent) {
  agent = newAgent;
  m_journal.add("register " + agentId);
  return LocalManagement::registerAgent(agentId, newAgent);
}

bool RecordingManagement::getData(ManageableData& record) {
  if (m_queries == Queries::recorded) m_journal.add("read " + record.getRootId());
  return LocalManagement::getData(record);
}

bool RecordingManagement::setData(ManageableData& record) {
  m_journal.add("write " + keyAndValue(record));
  return acceptSets && LocalManagement::setData(record);
}

bool RecordingManagement::observeData(const std::string& key, MgmtAgentIfc* newAgent) {
  m_journal.add("observe " + key + (newAgent == agent ? "" : " for another agent"));
  return LocalManagement::observeData(key, newAgent);
}

bool RecordingManagement::reportDataChanged(ManageableData& record) {
  m_journal.add("report " + keyAndValue(record));
  const auto answer = acceptReports.find(record.getRootId());
  return (answer == acceptReports.end() || answer->second) &&
         LocalManagement::reportDataChanged(record);
}

bool RecordingManagement::isUserData(ManageableData& record, int user) {
  if (m_queries == Queries::recorded)
    m_journal.add("user data " + record.getRootId() + " of " + std::to_string(user) + "?");
  return LocalManagement::isUserData(record, user);
}

void RecordingManagement::setItemState(ManageableData& record, int state) {
  m_journal.add("item state " + record.getRootId() + " " + std::to_string(state));
  LocalManagement::setItemState(record, state);
}

bool RecordingStore::setItem(const std::string& schema, const std::string& key,
                             const std::string& value) {
  if (powerless) return false;
  m_journal.add("store " + key + "=" + value + (refuses ? " refused" : ""));
  if (onSet) onSet(key);
  return !refuses && MemoryDataAccess::setItem(schema, key, value);
}

std::optional<std::string> RecordingStore::getItem(const std::string& schema,
                                                   const std::string& key) {
  return silent ? std::nullopt : MemoryDataAccess::getItem(schema, key);
}

void RecordingStore::put(const std::string& key, const std::string& value) {
  static_cast<void>(MemoryDataAccess::setItem(DASUtilsStrings::ClockSettingsSchema, key, value));
}

std::string RecordingStore::stored(const std::string& key) {
  return MemoryDataAccess::getItem(DASUtilsStrings::ClockSettingsSchema, key).value_or("(none)");
}

void RecordingSecurityLog::record(time_t time, int facility, int severity, int eventClass,
                                  int eventCode, bool failure, const std::string& text,
                                  const std::string& subject, const std::string& origin) {
  const Record record{time,    facility, severity, eventClass, eventCode,
                      failure, text,     subject,  origin};
  if (onRecord) onRecord(record);
  const std::lock_guard guard(m_mutex);
  m_records.push_back(record);
}

std::vector<RecordingSecurityLog::Record> RecordingSecurityLog::records() const {
  const std::lock_guard guard(m_mutex);
  return m_records;
}

void RecordingSecurityLog::clear() {
  const std::lock_guard guard(m_mutex);
  m_records.clear();
}

std::vector<std::string> RecordingSecurityLog::lines() const {
  std::vector<std::string> lines;
  for (const Record& record : records())
    lines.push_back((record.failure ? "refused " : "accepted ") + record.text);
  return lines;
}

}  // namespace support
