#pragma once

#include <string>

#include "MgmtAgentIfc.h"
#include "RecordingAgent.h"

namespace support {

// What the management layer asks of an agent.
inline bool set(MgmtAgentIfc& agent, const std::string& key, const std::string& value) {
  ManageableData data = conformance::recordOf(key, value);
  return agent.setData(data);
}

// "(refused)" when the agent gives nothing.
inline std::string get(MgmtAgentIfc& agent, const std::string& key) {
  ManageableData data = conformance::recordOf(key);
  std::string value;
  return agent.getData(data) && data.interogate(key, value) ? value : "(refused)";
}

inline void announceChange(MgmtAgentIfc& agent, const std::string& key, const std::string& value) {
  ManageableData data = conformance::recordOf(key, value);
  agent.manageableDataChanged(data);
}

}  // namespace support
