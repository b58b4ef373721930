#include "Framework.h"

#include <algorithm>

namespace example {
namespace {

constexpr Clock::Milliseconds kStopped = Clock::Milliseconds::max();

}  // namespace

Framework::Framework(Settings& settings) : m_settings(settings) {}

// A service that is absent here is one that the clock can do without.
Executable* Framework::getService(const std::string& name) {
  return name == "DataAccessServiceIfc" ? &m_settings : nullptr;
}

int Framework::createTimer(Executable& owner, unsigned int periodMilliseconds) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_timers[++m_lastId] = {&owner, Clock::Milliseconds(periodMilliseconds), kStopped};
  return m_lastId;
}

void Framework::setExpiry(int timerId, bool armed) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_timers.find(timerId);
  if (found == m_timers.end()) return;
  Timer& timer = found->second;
  timer.expiry = armed ? Clock::uptime() + timer.period : kStopped;
  m_changed.notify_one();
}

void Framework::startTimer(int timerId) {
  setExpiry(timerId, true);
}

void Framework::stopTimer(int timerId) {
  setExpiry(timerId, false);
}

// No expiry waits in a queue: it is delivered when it is taken from the timer.
void Framework::cancelTimer(int timerId) {
  setExpiry(timerId, false);
}

void Framework::deleteTimer(int timerId) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_timers.erase(timerId);
}

// Of equal ones, the one that was created first.
Framework::Timers::iterator Framework::earliest() {
  return std::min_element(m_timers.begin(), m_timers.end(), [](const auto& a, const auto& b) {
    return a.second.expiry < b.second.expiry;
  });
}

// Returns earlier when a timer has changed. An hour at most, so that the sum in wait_for is finite.
void Framework::waitUntil(Clock::Milliseconds uptime, std::unique_lock<std::mutex>& lock) {
  constexpr Clock::Milliseconds kLongest = std::chrono::hours(1);
  if (Clock::isSkipping()) return Clock::skipTo(uptime);
  m_changed.wait_for(lock, std::min(uptime - Clock::uptime(), kLongest));
}

void Framework::runUntil(Clock::Milliseconds uptime) {
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    const auto next = earliest();
    const bool expires = next != m_timers.end() && next->second.expiry <= uptime;
    const Clock::Milliseconds wanted = expires ? next->second.expiry : uptime;
    if (Clock::uptime() < wanted) {
      waitUntil(wanted, lock);
      continue;
    }
    if (!expires) return;
    const auto [id, timer] = *next;
    next->second.expiry = kStopped;
    lock.unlock();
    timer.owner->timerEvent(id);
    lock.lock();
  }
}

}  // namespace example
