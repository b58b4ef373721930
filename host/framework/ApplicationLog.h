#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/LogLevels.h"
#include "base/Mutex.h"

namespace host {

// One entry of the application log.
struct LogEntry {
  std::uint64_t number = 0;          // from 1, without gaps, in the order sinks see them
  std::chrono::nanoseconds wall{0};  // the device's wall time, since 1970-01-01 UTC
  int level = 0;                     // 0-6, as in Logging.h
  std::string component;             // empty for the system log
  std::string file;
  int line = 0;
  std::string text;        // clipped at ApplicationLog::kLongestText
  bool systemLog = false;  // written by syslogger_notice
};

// Receives entries, one at a time, on the thread that logs. Entries that write() itself logs are
// dropped. It must not wait for a peer, nor for a lock that any thread holds while it logs.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void write(const LogEntry& entry) = 0;  // an exception loses the entry
};

// The application log of the process, behind logAppUni. Without a sink, entries are only counted.
// Owner: the process; never destroyed. Thread: any. Failure: an entry is lost; nothing throws.
class ApplicationLog {
 public:
  static constexpr int kDefaultLevel = kLogNote;
  // Bytes of an entry's text; of a longer one the entry keeps the beginning and the length. This is
  // the length that a system log accepts for a line. It keeps a peer's long texts from filling the
  // log.
  static constexpr std::size_t kLongestText = 1024;

  [[nodiscard]] static ApplicationLog& instance() noexcept;
  ApplicationLog(const ApplicationLog&) = delete;
  ApplicationLog& operator=(const ApplicationLog&) = delete;

  // Entries above the level are dropped. 0-6; other numbers are clamped.
  void setLevel(int level) noexcept;
  [[nodiscard]] int level() const noexcept { return m_level.load(std::memory_order_relaxed); }

  void addSink(std::shared_ptr<LogSink> sink);
  // After the return no entry reaches the sink. REQUIRES: not called from a sink's write().
  void removeSink(const std::shared_ptr<LogSink>& sink);

  // Numbers the entry, stamps it with the wall time, and hands it to the sinks.
  void write(LogEntry entry) noexcept;

 private:
  ApplicationLog() = default;

  std::atomic<int> m_level{kDefaultLevel};
  Mutex m_mutex;  // held while sinks write
  std::uint64_t m_lastNumber CLOCK_GUARDED_BY(m_mutex) = 0;
  std::vector<std::shared_ptr<LogSink>> m_sinks CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
