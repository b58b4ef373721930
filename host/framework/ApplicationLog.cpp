#include "framework/ApplicationLog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <new>

#include "clock/VirtualClock.h"

namespace host {
namespace {

thread_local bool t_writing = false;  // this thread is inside a sink

std::chrono::nanoseconds wallTime() {
  if (const VirtualClock* clock = processClock()) return clock->wall();
  return std::chrono::system_clock::now().time_since_epoch();
}

void writeTo(LogSink& sink, const LogEntry& entry) noexcept {
  try {
    sink.write(entry);
  } catch (const std::exception&) {
    // There is nowhere to report it.
  }
}

}  // namespace

ApplicationLog& ApplicationLog::instance() noexcept {
  // Never destroyed, because threads may log until the process ends. Constructed without
  // allocation, because a lack of memory is logged too.
  alignas(ApplicationLog) static std::array<std::byte, sizeof(ApplicationLog)> place;
  static ApplicationLog& log = *new (place.data()) ApplicationLog;
  return log;
}

void ApplicationLog::setLevel(int level) noexcept {
  m_level.store(std::clamp(level, 0, 6), std::memory_order_relaxed);
}

void ApplicationLog::addSink(std::shared_ptr<LogSink> sink) {
  const MutexLock lock(m_mutex);
  m_sinks.push_back(std::move(sink));
}

void ApplicationLog::removeSink(const std::shared_ptr<LogSink>& sink) {
  const MutexLock lock(m_mutex);
  m_sinks.erase(std::remove(m_sinks.begin(), m_sinks.end(), sink), m_sinks.end());
}

void ApplicationLog::write(LogEntry entry) noexcept {
  if (t_writing) return;
  entry.wall = wallTime();
  const MutexLock lock(m_mutex);
  t_writing = true;
  entry.number = ++m_lastNumber;
  for (const auto& sink : m_sinks) writeTo(*sink, entry);
  t_writing = false;
}

}  // namespace host
