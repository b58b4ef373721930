#include "plugin/OrderedTimers.h"

#include <utility>

#include "Executable.h"

namespace plugin {

void OrderedTimers::tell(const std::string& call) const {
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
  m_timers.at(timer).expiry.reset();
  return m_timers.at(timer).owner;
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
  tell("service " + name);
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
  tell("create " + std::to_string(periodMilliseconds) + " -> " + std::to_string(id));
  return id;
}

void OrderedTimers::startTimer(int timerId) {
  tell("start " + std::to_string(timerId));
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timerId);
  if (found != m_timers.end()) found->second.expiry = m_clock.uptime() + found->second.period;
}

void OrderedTimers::stopTimer(int timerId) {
  tell("stop " + std::to_string(timerId));
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timerId);
  if (found != m_timers.end()) found->second.expiry.reset();
}

void OrderedTimers::cancelTimer(int timerId) {
  tell("cancel " + std::to_string(timerId));
  const std::lock_guard<std::mutex> guard(m_mutex);
  const auto found = m_timers.find(timerId);
  if (found != m_timers.end()) found->second.expiry.reset();
}

void OrderedTimers::deleteTimer(int timerId) {
  tell("delete " + std::to_string(timerId));
  const std::lock_guard<std::mutex> guard(m_mutex);
  m_timers.erase(timerId);
}

}  // namespace plugin
