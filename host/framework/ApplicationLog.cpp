#include "framework/ApplicationLog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "base/Origin.h"
#include "clock/VirtualClock.h"

namespace host {
namespace {

constexpr std::size_t kKibibyte = 1024;

// Many times what a start logs. Details (from kLogInfo on) have memory of their own, so that a
// client's many calls do not push out errors; and so have the lines that programs write. The system
// provides the pages as they fill.
alignas(LogRing::kAlignment) constinit std::array<char, 32 * kKibibyte> g_programMemory{};
alignas(LogRing::kAlignment) constinit std::array<char, 128 * kKibibyte> g_noteMemory{},
    g_detailMemory{};

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

bool isEarlier(const LogEntry& one, const LogEntry& other) {
  return one.number < other.number;
}

// rings: the bytes of each.
std::vector<LogEntry> entriesIn(const std::array<std::string, 3>& rings, std::uint64_t after) {
  std::vector<LogEntry> all;
  for (const std::string& ring : rings) {
    const auto middle = static_cast<std::ptrdiff_t>(all.size());
    for (LogEntry& entry : LogRing::entriesIn(ring)) all.push_back(std::move(entry));
    std::inplace_merge(all.begin(), all.begin() + middle, all.end(), isEarlier);
  }
  std::erase_if(all, [&](const LogEntry& entry) { return entry.number <= after; });
  return all;
}

// While it exists, what this thread logs is dropped.
class Writing {
 public:
  Writing() : m_before(std::exchange(t_writing, true)) {}
  ~Writing() { t_writing = m_before; }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

 private:
  const bool m_before;
};

}  // namespace

LogSink::~LogSink() {
  takeUpTo(kDefault);
}

void LogSink::takeUpTo(int level) noexcept {
  const auto isDetailed = [](int own) { return own != kDefault && own >= kLogInfo ? 1 : 0; };
  const int before = m_level.exchange(level, std::memory_order_relaxed);
  ApplicationLog::instance().m_detailedSinks += isDetailed(level) - isDetailed(before);
}

bool LogSink::takes(const LogEntryView& entry) const noexcept {
  const int own = m_level.load(std::memory_order_relaxed);
  if (own != kDefault) return entry.level <= own;
  return entry.systemLog || entry.level <= ApplicationLog::instance().level();
}

static_assert(LogRing::kLongestText >
              ApplicationLog::kLongestText + sizeof "... (4294967295 bytes)");

constexpr ApplicationLog::ApplicationLog() noexcept
    : m_notes(g_noteMemory), m_details(g_detailMemory), m_programs(g_programMemory) {}

ApplicationLog& ApplicationLog::instance() noexcept {
  // Never destroyed, because threads may log until the process ends. Constructed without
  // allocation, because a lack of memory is logged too.
  union Place {
    constexpr Place() : log() {}
    ~Place() {}  // NOLINT(modernize-use-equals-default): that would be deleted
    ApplicationLog log;
  };
  static constinit Place place;
  return place.log;
}

void ApplicationLog::setLevel(int level) noexcept {
  const MutexLock lock(m_mutex);
  m_level.store(std::clamp(level, 0, 6), std::memory_order_relaxed);
  updateWantedLevel();
}

void ApplicationLog::updateWantedLevel() noexcept {
  const int kept = m_keepers > 0 ? kKeptLevel : 0;
  m_wantedLevel.store(std::max(level(), kept), std::memory_order_relaxed);
}

void ApplicationLog::addSink(std::shared_ptr<LogSink> sink) {
  const MutexLock lock(m_mutex);
  m_sinks.push_back(std::move(sink));
}

void ApplicationLog::removeSink(const std::shared_ptr<LogSink>& sink) {
  const MutexLock lock(m_mutex);
  m_sinks.erase(std::remove(m_sinks.begin(), m_sinks.end(), sink), m_sinks.end());
}

void ApplicationLog::write(LogEntryView& entry) noexcept {
  if (t_writing) return;
  entry.wall = wallTime();
  entry.origin = originHere();
  entry.call = callHere();
  const MutexLock lock(m_mutex);
  entry.number = ++m_lastNumber;
  if (m_keepers > 0) ringFor(entry).add(entry);
  for (const auto& sink : m_sinks) {
    if (sink->takes(entry)) return tellSinks(entry);
  }
}

// Only a line that a program wrote has no place in the code.
LogRing& ApplicationLog::ringFor(const LogEntryView& entry) {
  if (entry.file.empty() && !entry.systemLog) return m_programs;
  return entry.level < kLogInfo ? m_notes : m_details;
}

void ApplicationLog::tellSinks(const LogEntryView& view) const try {
  const LogEntry entry = copyOf(view);
  const Writing writing;
  for (const auto& sink : m_sinks) {
    if (sink->takes(view)) writeTo(*sink, entry);
  }
} catch (const std::exception&) {
  // No memory for the entry: the sinks miss it.
}

std::vector<LogEntry> ApplicationLog::kept(std::uint64_t after) const {
  std::array<std::string, 3> rings;
  {
    const MutexLock lock(m_mutex);
    rings = {m_notes.bytes(), m_details.bytes(), m_programs.bytes()};
  }
  return entriesIn(rings, after);
}

void ApplicationLog::withKept(std::uint64_t after,
                              const std::function<void(const std::vector<LogEntry>&)>& see) const {
  const Writing writing;
  const MutexLock lock(m_mutex);
  see(entriesIn({m_notes.bytes(), m_details.bytes(), m_programs.bytes()}, after));
}

void ApplicationLog::startKeeping() noexcept {
  const MutexLock lock(m_mutex);
  if (m_keepers++ == 0) {
    m_notes.clear();
    m_details.clear();
    m_programs.clear();
  }
  updateWantedLevel();
}

void ApplicationLog::stopKeeping() noexcept {
  const MutexLock lock(m_mutex);
  --m_keepers;
  updateWantedLevel();
}

}  // namespace host
