#include "plugin/RecordingServices.h"

#include "ManageableData.h"

namespace plugin {

namespace {

std::string valueOf(const ManageableData& record, const std::string& key) {
  std::string value;
  return record.interogate(key, value) ? value : "(none)";
}

bool answer(const std::map<std::string, bool>& answers, const std::string& key) {
  const auto found = answers.find(key);
  return found == answers.end() || found->second;
}

}  // namespace

PhysDefs::hardwareSubVariant RecordingPhysical::getHardwareSubVariant() {
  m_journal.add("hardware variant?");
  return static_cast<PhysDefs::hardwareSubVariant>(m_variant);
}

void RecordingPhysical::subscribe(physicalEventObserver* observer,
                                  const std::vector<PhysDefs::SubscriptionGrp>& groups) {
  subscriber = observer;
  std::string line = "subscribe";
  for (const auto& group : groups) {
    line += " (" + std::to_string(group.other.kind) + "," + std::to_string(group.other.first) +
            "," + std::to_string(group.other.last) + ")";
  }
  m_journal.add(line);
}

bool RecordingManagement::registerAgent(const std::string& agentId, MgmtAgentIfc* newAgent) {
  agent = newAgent;
  m_journal.add("register " + agentId);
  return true;
}

bool RecordingManagement::getData(ManageableData& record) {
  const std::string key = record.getRootId();
  m_journal.add("read " + key);
  const auto found = values.find(key);
  if (found == values.end()) return false;
  record.populate(key, found->second);
  return true;
}

bool RecordingManagement::setData(ManageableData& record) {
  const std::string key = record.getRootId();
  m_journal.add("write " + key + "=" + valueOf(record, key));
  return acceptSets;
}

bool RecordingManagement::observeData(const std::string& key, MgmtAgentIfc* newAgent) {
  m_journal.add("observe " + key + (newAgent == agent ? "" : " for another agent"));
  return true;
}

bool RecordingManagement::reportDataChanged(ManageableData& record) {
  const std::string key = record.getRootId();
  m_journal.add("report " + key + "=" + valueOf(record, key));
  return answer(acceptReports, key);
}

bool RecordingManagement::isUserData(ManageableData& record, int user) {
  const std::string key = record.getRootId();
  m_journal.add("user data " + key + " of " + std::to_string(user) + "?");
  return answer(userData, key);
}

void RecordingManagement::setItemState(ManageableData& record, int state) {
  m_journal.add("item state " + record.getRootId() + " " + std::to_string(state));
}

bool RecordingStore::setItem(const std::string& /*schema*/, const std::string& key,
                             const std::string& value) {
  m_journal.add("store " + key + "=" + value);
  if (onSet) onSet(key);
  if (acceptSets) items[key] = value;
  return acceptSets;
}

std::optional<std::string> RecordingStore::getItem(const std::string& /*schema*/,
                                                   const std::string& key) {
  const auto found = items.find(key);
  return found != items.end() ? std::optional(found->second) : std::nullopt;
}

}  // namespace plugin
