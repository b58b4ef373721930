#include "integration/SetLedger.h"

#include <algorithm>

namespace integration {
namespace {

bool holds(const std::vector<std::string>& values, const std::string& value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

}  // namespace

void SetLedger::asked(const std::string& key, const std::string& value) {
  m_entries[key].underWay.push_back(value);
}

void SetLedger::answered(const std::string& key, bool accepted) {
  Entry& entry = m_entries[key];
  const std::string value = entry.underWay.front();
  entry.underWay.erase(entry.underWay.begin());
  if (!accepted) return entry.refused.push_back(value);
  entry.kept = value;
  entry.refused.clear();
}

bool SetLedger::allows(const std::string& key, const std::string& value) const {
  const auto found = m_entries.find(key);
  if (found == m_entries.end() || !found->second.kept) return true;
  const Entry& entry = found->second;
  return value == *entry.kept || holds(entry.refused, value) || holds(entry.underWay, value);
}

std::string SetLedger::allowed(const std::string& key) const {
  const Entry& entry = m_entries.at(key);
  std::string text = "acknowledged " + entry.kept.value_or("(nothing)");
  for (const std::string& value : entry.refused) text += ", refused " + value;
  for (const std::string& value : entry.underWay) text += ", asked " + value;
  return text;
}

bool SetLedger::found(const std::string& key, const std::string& value) {
  Entry& entry = m_entries[key];
  const bool fresh = entry.kept != value && holds(entry.underWay, value);
  entry = Entry{value, {}, {}};
  return fresh;
}

std::vector<std::string> SetLedger::keys() const {
  std::vector<std::string> names;
  for (const auto& [key, entry] : m_entries) names.push_back(key);
  return names;
}

}  // namespace integration
