#include "services/MemoryDataAccess.h"

namespace host {

bool MemoryDataAccess::setItem(const std::string& schema, const std::string& key,
                               const std::string& value) {
  const MutexLock lock(m_mutex);
  ++m_setsAsked;
  if (m_acceptFirst == 0 && m_refuseThen > 0) {
    --m_refuseThen;
    return false;
  }
  if (m_acceptFirst > 0) --m_acceptFirst;
  m_items[{schema, key}] = value;
  return true;
}

std::optional<std::string> MemoryDataAccess::getItem(const std::string& schema,
                                                     const std::string& key) {
  const MutexLock lock(m_mutex);
  const auto found = m_items.find({schema, key});
  if (m_refuseGets || found == m_items.end()) return std::nullopt;
  return found->second;
}

void MemoryDataAccess::refuseSets(std::size_t accepted, std::size_t refused) {
  const MutexLock lock(m_mutex);
  m_acceptFirst = accepted;
  m_refuseThen = refused;
}

void MemoryDataAccess::refuseGets(bool refused) {
  const MutexLock lock(m_mutex);
  m_refuseGets = refused;
}

std::size_t MemoryDataAccess::setsAsked() const {
  const MutexLock lock(m_mutex);
  return m_setsAsked;
}

}  // namespace host
