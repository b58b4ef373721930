#include "framework/FailedLookups.h"

#include <algorithm>

namespace host {

bool FailedLookups::holds(const std::string& name, Instant now) const {
  const MutexLock lock(m_mutex);
  const auto found = m_failed.find(name);
  return found != m_failed.end() && !found->second.allowed && now - found->second.last < kKept;
}

bool FailedLookups::isSilent(Instant now) const {
  const MutexLock lock(m_mutex);
  return std::any_of(m_failed.begin(), m_failed.end(), [now](const auto& name) {
    const std::optional<Instant>& asked = name.second.unanswered;
    return asked && now - *asked < kKept;
  });
}

bool FailedLookups::add(const std::string& name, Instant now) {
  const MutexLock lock(m_mutex);
  const auto found = m_failed.find(name);
  const bool first = found == m_failed.end() || found->second.allowed;
  Failure& failure = m_failed[name];
  failure = {now, false, false, failure.unanswered};
  if (m_failed.size() > kMost) {
    m_failed.erase(std::min_element(m_failed.begin(), m_failed.end(), [](auto& a, auto& b) {
      return a.second.last < b.second.last;
    }));
  }
  return first;
}

void FailedLookups::setUnanswered(const std::string& name) {
  const MutexLock lock(m_mutex);
  const auto found = m_failed.find(name);
  if (found == m_failed.end() || found->second.answered) return;
  found->second.unanswered = found->second.last;
}

void FailedLookups::setAnswered(const std::string& name) {
  const MutexLock lock(m_mutex);
  const auto found = m_failed.find(name);
  if (found == m_failed.end()) return;
  found->second.answered = true;
  found->second.unanswered.reset();
}

void FailedLookups::forget(const std::string& name) {
  const MutexLock lock(m_mutex);
  m_failed.erase(name);
}

void FailedLookups::allowAll() {
  const MutexLock lock(m_mutex);
  for (auto& [name, failure] : m_failed) failure.allowed = true;
}

void FailedLookups::forgetAll() {
  const MutexLock lock(m_mutex);
  m_failed.clear();
}

FailedLookups& failedLookups() {
  static FailedLookups& one = *new FailedLookups;
  return one;
}

}  // namespace host
