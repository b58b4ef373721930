#include "ManageableData.h"

ManageableData::ManageableData() = default;
ManageableData::~ManageableData() = default;
ManageableData::ManageableData(const ManageableData&) = default;
ManageableData& ManageableData::operator=(const ManageableData&) = default;

std::string ManageableData::getRootId() const {
  return m_roots.empty() ? std::string() : m_roots.front();
}

// The agent is not stored: local management finds its agents by id.
void ManageableData::setRootId(const std::string& key, LocalMgmtIfc* /*agent*/) {
  m_roots.assign(1, key);
}

void ManageableData::addRootId(const std::string& key, LocalMgmtIfc* /*agent*/) {
  m_roots.push_back(key);
}

void ManageableData::populate(const std::string& key, const std::string& value) {
  m_values[key] = value;
}

void ManageableData::populate(const std::string& identifier, const std::string& name,
                              const std::string& value) {
  if (m_roots.empty()) m_roots.push_back(identifier);
  m_names[identifier] = name;
  m_values[identifier] = value;
}

bool ManageableData::interogate(const std::string& key, std::string& value) const {
  const auto found = m_values.find(key);
  if (found == m_values.end()) return false;
  value = found->second;
  return true;
}
