#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Executable.h"
#include "LocalMgmtIfc.h"
#include "base/Mutex.h"

namespace host {

// The device's local management: device values, agents, item states, change reports.
// Owner: the device. Thread: any. Agents are called without a lock held, by the operator's
// operations (get, set, reset, deliverChanges) or on the thread where `dispatch` runs its tasks.
// Failure: an agent's exception is logged at level 2 and counts as a refusal.
class LocalManagement : public Executable, public LocalMgmtIfc {
 public:
  using Dispatch = std::function<void(std::function<void()>)>;
  using ReportListener = std::function<void(const std::string& key, const std::string& value)>;

  // dispatch: queues a task for the management thread. Without it, setValue notifies the observers
  // on its caller's thread, and changes made by an agent wait for the next deliverChanges.
  explicit LocalManagement(Dispatch dispatch = {});

  void init(Context&) override {}
  void shutdown() override {}

  // LocalMgmtIfc, which agents use.
  bool registerAgent(const std::string& agentId, MgmtAgentIfc* agent) override;
  bool getData(ManageableData& record) override;
  bool setData(ManageableData& record) override;
  bool observeData(const std::string& key, MgmtAgentIfc* agent) override;
  bool reportDataChanged(ManageableData& record) override;
  bool isUserData(ManageableData& record, int user) override;
  void setItemState(ManageableData& record, int state) override;

  // Device values. setValue notifies the observers even if the value stays the same.
  void setValue(const std::string& key, const std::string& value);
  [[nodiscard]] std::optional<std::string> value(const std::string& key) const;

  // Whether an agent "ClockMgmtId" is registered.
  [[nodiscard]] bool hasClock() const;

  // The operator's operations on that agent. False: it refused, or is not registered.
  // REQUIRES: in a device, the caller is on its management thread (ManagementThread::run).
  [[nodiscard]] bool get(const std::string& key, std::string& value);
  [[nodiscard]] bool set(const std::string& key, const std::string& value);
  [[nodiscard]] bool reset();

  // Notifies the observers of the pending changes, in order, on the caller's thread.
  void deliverChanges();

  // 0, the default: settable. 4: set by the device itself.
  [[nodiscard]] int itemState(const std::string& key) const;

  // What isUserData answers for `key`; true by default.
  void setUserData(const std::string& key, bool isUserData);

  // Called for each change report, on the agent's thread.
  void onReport(ReportListener listener);

  // Called after each set in which the service threw, on the thread of the set.
  void onThrownSet(ReportListener listener);

  // Removes all agents, observed keys and pending changes.
  // REQUIRES: no agent is being called. In a device: call it on the management thread.
  void dropAgents();

 private:
  struct Change {
    std::string key;
    std::string value;
  };

  MgmtAgentIfc* agent() const;
  void reportThrownSet(const std::string& key, const std::string& value);
  void change(const std::string& key, const std::string& value);
  bool nextChange(Change& change, std::vector<MgmtAgentIfc*>& observers);

  const Dispatch m_dispatch;
  mutable Mutex m_mutex;  // never held while an agent or listener runs
  std::map<std::string, std::string> m_values CLOCK_GUARDED_BY(m_mutex);
  std::map<std::string, MgmtAgentIfc*> m_agents CLOCK_GUARDED_BY(m_mutex);
  std::vector<std::pair<std::string, MgmtAgentIfc*>> m_observers
      CLOCK_GUARDED_BY(m_mutex);  // in order of registration
  std::map<std::string, int> m_itemStates CLOCK_GUARDED_BY(m_mutex);
  std::map<std::string, bool> m_userData CLOCK_GUARDED_BY(m_mutex);
  std::deque<Change> m_changes CLOCK_GUARDED_BY(m_mutex);
  ReportListener m_reportListener CLOCK_GUARDED_BY(m_mutex);
  ReportListener m_thrownSetListener CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
