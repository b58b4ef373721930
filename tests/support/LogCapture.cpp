#include "support/LogCapture.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace support {

class LogCapture::Sink : public host::LogSink {
 public:
  explicit Sink(std::function<void(const host::LogEntry&)> onEntry)
      : m_onEntry(std::move(onEntry)) {}

  void write(const host::LogEntry& entry) override {
    if (m_onEntry) m_onEntry(entry);
    const std::lock_guard lock(m_mutex);
    m_entries.push_back(entry);
    m_written.notify_all();
  }

  std::vector<host::LogEntry> entries() {
    const std::lock_guard lock(m_mutex);
    return m_entries;
  }

  void clear() {
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
  }

  template <class Wanted>
  std::size_t count(Wanted wanted) {
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(std::count_if(m_entries.begin(), m_entries.end(), wanted));
  }

  template <class Wanted>
  bool waitFor(std::chrono::seconds limit, Wanted wanted) {
    std::unique_lock lock(m_mutex);
    return m_written.wait_for(
        lock, limit, [&] { return std::any_of(m_entries.begin(), m_entries.end(), wanted); });
  }

 private:
  const std::function<void(const host::LogEntry&)> m_onEntry;
  std::mutex m_mutex;
  std::condition_variable m_written;
  std::vector<host::LogEntry> m_entries;
};

LogCapture::LogCapture(int level, std::function<void(const host::LogEntry&)> onEntry)
    : m_sink(std::make_shared<Sink>(std::move(onEntry))),
      m_levelBefore(host::ApplicationLog::instance().level()) {
  host::ApplicationLog::instance().setLevel(level);
  host::ApplicationLog::instance().addSink(m_sink);
}

LogCapture::~LogCapture() {
  host::ApplicationLog::instance().removeSink(m_sink);
  host::ApplicationLog::instance().setLevel(m_levelBefore);
}

std::vector<host::LogEntry> LogCapture::entries() const {
  return m_sink->entries();
}

void LogCapture::clear() {
  m_sink->clear();
}

bool LogCapture::has(const std::string& text) const {
  return count(text) > 0;
}

bool LogCapture::has(int level, const std::string& text) const {
  return m_sink->count([&](const host::LogEntry& entry) {
    return entry.level == level && entry.text == text;
  }) > 0;
}

std::size_t LogCapture::count(const std::string& text) const {
  return m_sink->count([&](const host::LogEntry& entry) { return entry.text == text; });
}

bool LogCapture::hasPart(const std::string& part) const {
  return m_sink->count([&](const host::LogEntry& entry) {
    return entry.text.find(part) != std::string::npos;
  }) > 0;
}

bool LogCapture::waitForPart(const std::string& part, std::chrono::seconds limit) const {
  return m_sink->waitFor(limit, [&](const host::LogEntry& entry) {
    return entry.text.find(part) != std::string::npos;
  });
}

std::string LogCapture::text() const {
  std::string lines;
  for (const host::LogEntry& entry : entries()) {
    lines += entry.component + " " + std::to_string(entry.level) + ": " + entry.text + "\n";
  }
  return lines;
}

}  // namespace support
