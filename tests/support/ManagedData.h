#pragma once

#include <string>

#include "ManageableData.h"
#include "MgmtAgentIfc.h"

namespace support {

// A record of a key, without a value or with one.
inline ManageableData dataOf(const std::string& key) {
  ManageableData data;
  data.setRootId(key, nullptr);
  return data;
}

inline ManageableData dataOf(const std::string& key, const std::string& value) {
  ManageableData data = dataOf(key);
  data.populate(key, value);
  return data;
}

// What the management layer asks of an agent.
inline bool set(MgmtAgentIfc& agent, const std::string& key, const std::string& value) {
  ManageableData data = dataOf(key, value);
  return agent.setData(data);
}

// "(refused)" when the agent gives nothing.
inline std::string get(MgmtAgentIfc& agent, const std::string& key) {
  ManageableData data = dataOf(key);
  std::string value;
  return agent.getData(data) && data.interogate(key, value) ? value : "(refused)";
}

inline void announceChange(MgmtAgentIfc& agent, const std::string& key, const std::string& value) {
  ManageableData data = dataOf(key, value);
  agent.manageableDataChanged(data);
}

}  // namespace support
