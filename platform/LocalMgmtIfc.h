#pragma once

#include <string>

class ManageableData;
class MgmtAgentIfc;

// The device's local management service, registered as "LocalMgmtIfc".
// Owner: the framework. Thread: any; no operation calls back into an agent before it returns, so an
// agent may call from inside setData or manageableDataChanged.
class LocalMgmtIfc {
 public:
  // Makes `agent` reachable for management under `agentId`, until another agent replaces it or the
  // service is unloaded. The agent is not owned.
  virtual bool registerAgent(const std::string& agentId, MgmtAgentIfc* agent) = 0;

  // Reads the record's root ("mac-addr", "interface-status", ...) into the record. False if the
  // device holds no such value.
  virtual bool getData(ManageableData& record) = 0;

  // Writes the record's value of its root. False when it was refused, as without root or value.
  virtual bool setData(ManageableData& record) = 0;

  // From now on each change of `key` calls agent->manageableDataChanged.
  virtual bool observeData(const std::string& key, MgmtAgentIfc* agent) = 0;

  // An agent's report of a change: the record's root now has the record's value.
  virtual bool reportDataChanged(ManageableData& record) = 0;

  // The user-data query: true when the item that the record's root names may be reset to its
  // default for the user. `user` numbers the user; 0 is the device's own.
  virtual bool isUserData(ManageableData& record, int user) = 0;

  // The item-state setter: sets the access to the record's root. 0: settable. 4: set by the device
  // itself, shown as read-only.
  virtual void setItemState(ManageableData& record, int state) = 0;

 protected:
  ~LocalMgmtIfc() = default;
};
