#include "plugin/OrderedTimers.h"

#include <utility>

#include "Executable.h"

namespace plugin {

void OrderedTimers::report(const std::string& call) const {
  if (onCall) onCall(call);
}

std::optional<std::pair<std::chrono::nanoseconds, int>> OrderedTimers::next() const {
  const std::lock_guard<std::mutex> guard(m_mutex);
  std::optional<std::pair<std::chrono::nanoseconds, int>> earliest;
  for (const auto& [id, timer] : m_timers) {
    if (!timer.expiry) continue;
    const bool wins = !earliest || *timer.expiry < earliest->first ||
                      (*timer.expiry == earliest->first && m_order == Order::reversed);
    if (wins) earliest = {*timer.expiry, id};
  }
  return earliest;
}

Executable* OrderedTimers::disarm(int timer) {
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timer);
  if (found == m_timers.end()) return nullptr;
  found->second.expiry.reset();
  return found->second.owner;
}

void OrderedTimers::pass(std::chrono::nanoseconds duration) {
  const auto end = m_clock.uptime() + duration;
  for (auto expiry = next(); expiry && expiry->first <= end; expiry = next()) {
    m_clock.advance(expiry->first - m_clock.uptime());
    disarm(expiry->second)->timerEvent(expiry->second);
  }
  m_clock.advance(end - m_clock.uptime());
}

std::optional<std::chrono::milliseconds> OrderedTimers::periodOf(int timer) const {
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timer);
  return found != m_timers.end() ? std::optional(found->second.period) : std::nullopt;
}

std::optional<std::chrono::nanoseconds> OrderedTimers::dueIn(int timer) const {
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timer);
  if (found == m_timers.end() || !found->second.expiry) return std::nullopt;
  return *found->second.expiry - m_clock.uptime();
}

std::vector<int> OrderedTimers::armed() const {
  const std::lock_guard<std::mutex> guard(m_mutex);
  std::vector<int> ids;
  for (const auto& [id, timer] : m_timers)
    if (timer.expiry) ids.push_back(id);
  return ids;
}

std::size_t OrderedTimers::timers() const {
  const std::lock_guard<std::mutex> guard(m_mutex);
  return m_timers.size();
}

Executable* OrderedTimers::getService(const std::string& name) {
  report("service " + name);
  const auto found = m_services.find(name);
  return found != m_services.end() ? found->second : nullptr;
}

int OrderedTimers::createTimer(Executable& owner, unsigned int periodMilliseconds) {
  int id = 0;
  {
    const std::lock_guard<std::mutex> guard(m_mutex);
    id = m_refusedId ? *m_refusedId : ++m_lastId;
    if (!m_refusedId && id > 0)
      m_timers[id] = Timer{&owner, std::chrono::milliseconds{periodMilliseconds}, std::nullopt};
  }
  report("create " + std::to_string(periodMilliseconds) + " -> " + std::to_string(id));
  return id;
}

void OrderedTimers::startTimer(int timerId) {
  report("start " + std::to_string(timerId));
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timerId);
  if (found != m_timers.end()) found->second.expiry = m_clock.uptime() + found->second.period;
}

void OrderedTimers::stopTimer(int timerId) {
  report("stop " + std::to_string(timerId));
  disarm(timerId);
}

void OrderedTimers::cancelTimer(int timerId) {
  report("cancel " + std::to_string(timerId));
  disarm(timerId);
}

void OrderedTimers::deleteTimer(int timerId) {
  report("delete " + std::to_string(timerId));
  const std::lock_guard<std::mutex> guard(m_mutex);
  m_timers.erase(timerId);
  if (m_timers.empty()) m_lastId = 0;  // so that the next service's timers have the same ids
}

}  // namespace plugin
