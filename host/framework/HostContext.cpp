#include "framework/HostContext.h"

#include <chrono>

#include "clock/VirtualClock.h"

namespace host {

HostContext::HostContext(VirtualClock& clock) : m_clock(clock) {}

void HostContext::add(const std::string& name, Executable* service) {
  const MutexLock lock(m_mutex);
  m_services[name] = service;
}

void HostContext::remove(const std::string& name) {
  const MutexLock lock(m_mutex);
  m_services.erase(name);
}

Executable* HostContext::getService(const std::string& name) {
  const MutexLock lock(m_mutex);
  const auto found = m_services.find(name);
  return found == m_services.end() ? nullptr : found->second;
}

int HostContext::createTimer(Executable& owner, unsigned int periodMilliseconds) {
  return m_clock.createTimer(owner, std::chrono::milliseconds{periodMilliseconds});
}

void HostContext::startTimer(int timerId) {
  m_clock.startTimer(timerId);
}

void HostContext::stopTimer(int timerId) {
  m_clock.stopTimer(timerId);
}

void HostContext::cancelTimer(int timerId) {
  m_clock.cancelTimer(timerId);
}

void HostContext::deleteTimer(int timerId) {
  m_clock.deleteTimer(timerId);
}

}  // namespace host
