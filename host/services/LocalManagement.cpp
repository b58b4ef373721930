#include "services/LocalManagement.h"

#include <algorithm>
#include <exception>

#include "Logging.h"
#include "ManageableData.h"
#include "MgmtAgentIfc.h"
#include "base/LogLevels.h"
#include "base/Origin.h"

namespace host {
namespace {

constexpr const char* kClockAgent = "ClockMgmtId";

ManageableData recordOf(LocalManagement& owner, const std::string& key, const std::string& value) {
  ManageableData record;
  record.setRootId(key, &owner);
  record.populate(key, value);
  return record;
}

// Runs a call into an agent. An exception counts as a refusal.
template <class Operation>
bool guarded(const char* operation, const std::string& key, Operation call) {
  try {
    return call();
  } catch (const std::exception& error) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__,
              "%s of \"%s\" refused: the service threw \"%s\"", operation, key.c_str(),
              error.what());
  } catch (...) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__, "%s of \"%s\" refused: the service threw",
              operation, key.c_str());
  }
  return false;
}

}  // namespace

LocalManagement::LocalManagement(Dispatch dispatch) : m_dispatch(std::move(dispatch)) {}

bool LocalManagement::registerAgent(const std::string& agentId, MgmtAgentIfc* agent) {
  if (agent == nullptr) return false;
  const MutexLock lock(m_mutex);
  m_agents[agentId] = agent;
  return true;
}

bool LocalManagement::getData(ManageableData& record) {
  const std::string key = record.getRootId();
  const auto held = value(key);
  if (!held) return false;
  record.populate(key, *held);
  return true;
}

bool LocalManagement::setData(ManageableData& record) {
  const std::string key = record.getRootId();
  std::string value;
  if (key.empty() || !record.interogate(key, value)) return false;
  change(key, value);
  return true;
}

bool LocalManagement::observeData(const std::string& key, MgmtAgentIfc* agent) {
  if (agent == nullptr) return false;
  const MutexLock lock(m_mutex);
  m_observers.emplace_back(key, agent);
  return true;
}

bool LocalManagement::reportDataChanged(ManageableData& record) {
  const std::string key = record.getRootId();
  std::string value;
  if (key.empty() || !record.interogate(key, value)) return false;
  logAppUni("clockhost", kLogNote, __FILE__, __LINE__, "change reported: \"%s\" is \"%s\"",
            key.c_str(), value.c_str());
  ReportListener listener;
  {
    const MutexLock lock(m_mutex);
    listener = m_reportListener;
  }
  if (listener) listener(key, value);
  return true;
}

bool LocalManagement::isUserData(ManageableData& record, int) {
  const MutexLock lock(m_mutex);
  const auto answer = m_userData.find(record.getRootId());
  return answer == m_userData.end() || answer->second;
}

void LocalManagement::setItemState(ManageableData& record, int state) {
  const MutexLock lock(m_mutex);
  m_itemStates[record.getRootId()] = state;
}

void LocalManagement::setValue(const std::string& key, const std::string& value) {
  change(key, value);
  if (!m_dispatch) deliverChanges();
}

std::optional<std::string> LocalManagement::value(const std::string& key) const {
  const MutexLock lock(m_mutex);
  const auto held = m_values.find(key);
  if (held == m_values.end()) return std::nullopt;
  return held->second;
}

bool LocalManagement::hasClock() const {
  return agent() != nullptr;
}

bool LocalManagement::get(const std::string& key, std::string& value) {
  MgmtAgentIfc* const clock = agent();
  if (clock == nullptr) return false;
  return guarded("get", key, [&] {
    ManageableData record;
    record.setRootId(key, this);
    return clock->getData(record) && record.interogate(key, value);
  });
}

bool LocalManagement::set(const std::string& key, const std::string& value) {
  MgmtAgentIfc* const clock = agent();
  if (clock == nullptr) return false;
  const CauseScope cause({"set", key});
  bool answered = false;
  const bool accepted = guarded("set", key, [&] {
    ManageableData record = recordOf(*this, key, value);
    const bool answer = clock->setData(record);
    answered = true;
    return answer;
  });
  if (!answered) reportThrownSet(key, value);
  return accepted;
}

bool LocalManagement::reset() {
  MgmtAgentIfc* const clock = agent();
  if (clock == nullptr) return false;
  const CauseScope cause({"reset", {}});
  return guarded("reset", "user data", [&] { return clock->resetUserData(); });
}

void LocalManagement::deliverChanges() {
  Change change;
  std::vector<MgmtAgentIfc*> observers;
  while (nextChange(change, observers)) {
    for (MgmtAgentIfc* const observer : observers) {
      guarded("change", change.key, [&] {
        ManageableData record = recordOf(*this, change.key, change.value);
        observer->manageableDataChanged(record);
        return true;
      });
    }
  }
}

int LocalManagement::itemState(const std::string& key) const {
  const MutexLock lock(m_mutex);
  const auto state = m_itemStates.find(key);
  return state == m_itemStates.end() ? 0 : state->second;
}

void LocalManagement::setUserData(const std::string& key, bool isUserData) {
  const MutexLock lock(m_mutex);
  m_userData[key] = isUserData;
}

void LocalManagement::onReport(ReportListener listener) {
  const MutexLock lock(m_mutex);
  m_reportListener = std::move(listener);
}

void LocalManagement::onThrownSet(ReportListener listener) {
  const MutexLock lock(m_mutex);
  m_thrownSetListener = std::move(listener);
}

void LocalManagement::dropAgents() {
  const MutexLock lock(m_mutex);
  m_agents.clear();
  m_observers.clear();
  m_changes.clear();
}

MgmtAgentIfc* LocalManagement::agent() const {
  const MutexLock lock(m_mutex);
  const auto found = m_agents.find(kClockAgent);
  return found == m_agents.end() ? nullptr : found->second;
}

void LocalManagement::reportThrownSet(const std::string& key, const std::string& value) {
  guarded("report of a set", key, [&] {
    ReportListener listener;
    {
      const MutexLock lock(m_mutex);
      listener = m_thrownSetListener;
    }
    if (listener) listener(key, value);
    return true;
  });
}

void LocalManagement::change(const std::string& key, const std::string& value) {
  {
    const MutexLock lock(m_mutex);
    m_values[key] = value;
    // Observers that register later must not get this change.
    const auto observes = [&key](const auto& entry) { return entry.first == key; };
    if (std::none_of(m_observers.begin(), m_observers.end(), observes)) return;
    m_changes.push_back({key, value});
  }
  if (m_dispatch) m_dispatch([this] { deliverChanges(); });
}

// One at a time, because an observer may drop the others or change a value itself.
bool LocalManagement::nextChange(Change& change, std::vector<MgmtAgentIfc*>& observers) {
  const MutexLock lock(m_mutex);
  if (m_changes.empty()) return false;
  change = std::move(m_changes.front());
  m_changes.pop_front();
  observers.clear();
  for (const auto& [key, agent] : m_observers) {
    if (key == change.key) observers.push_back(agent);
  }
  return true;
}

}  // namespace host
