#include "integration/SetLedger.h"

#include <algorithm>
#include <stdexcept>

namespace integration {

void SetLedger::begins(const std::string& key, const std::string& value) {
  m_entries[key] = {value, {}};
}

SetLedger::Number SetLedger::asked(const std::string& key, const std::string& value) {
  m_entries.at(key).since.push_back({++m_sets, value});
  return m_sets;
}

void SetLedger::answered(const std::string& key, Number set, bool accepted) {
  Entry& entry = m_entries.at(key);
  const auto answered = std::find_if(entry.since.begin(), entry.since.end(),
                                     [set](const Set& one) { return one.number == set; });
  if (answered == entry.since.end()) throw std::out_of_range("no set is waiting for this answer");
  answered->refused = !accepted;
  if (!accepted) return;
  entry.kept = answered->value;
  entry.since.erase(entry.since.begin(), answered + 1);
}

bool SetLedger::allows(const std::string& key, const std::string& value) const {
  const Entry& entry = m_entries.at(key);
  return value == entry.kept ||
         std::any_of(entry.since.begin(), entry.since.end(),
                     [&value](const Set& set) { return set.value == value; });
}

std::string SetLedger::allowed(const std::string& key) const {
  const Entry& entry = m_entries.at(key);
  std::string text = "kept " + entry.kept;
  for (const Set& set : entry.since) text += (set.refused ? ", refused " : ", asked ") + set.value;
  return text;
}

bool SetLedger::found(const std::string& key, const std::string& value) {
  Entry& entry = m_entries.at(key);
  const bool fresh = value != entry.kept &&
                     std::any_of(entry.since.begin(), entry.since.end(), [&value](const Set& set) {
                       return !set.refused && set.value == value;
                     });
  entry = {value, {}};
  return fresh;
}

std::vector<std::string> SetLedger::keys() const {
  std::vector<std::string> names;
  for (const auto& [key, entry] : m_entries) names.push_back(key);
  return names;
}

}  // namespace integration
