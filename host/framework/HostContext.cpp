#include "framework/HostContext.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "clock/VirtualClock.h"

namespace host {
namespace {

// The service's timers in the order in which it first creates them.
constexpr std::array<std::string_view, 7> kPlaces = {
    "fallback refresh", "time changed", "date changed", kZoneRefresh,
    "time sync",        "date sync",    "NTP restart"};

}  // namespace

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
  const int timer = m_clock.createTimer(owner, std::chrono::milliseconds{periodMilliseconds});
  const MutexLock lock(m_mutex);
  const auto deleted = m_deleted.extract(std::this_thread::get_id());
  m_places[timer] = deleted.empty() ? m_nextPlace++ : deleted.mapped();
  return timer;
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
  const MutexLock lock(m_mutex);
  const auto place = m_places.extract(timerId);
  if (!place.empty()) m_deleted[std::this_thread::get_id()] = place.mapped();
}

std::vector<NamedTimer> HostContext::armedTimers() const {
  const MutexLock lock(m_mutex);
  std::vector<NamedTimer> timers;
  for (const auto& [id, place] : m_places) {
    const auto expiry = m_clock.expiryOf(id);
    if (expiry) timers.push_back({place < kPlaces.size() ? kPlaces[place] : "timer", *expiry});
  }
  std::sort(timers.begin(), timers.end(),
            [](const NamedTimer& a, const NamedTimer& b) { return a.expiry < b.expiry; });
  return timers;
}

}  // namespace host
