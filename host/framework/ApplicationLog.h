#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "base/LogLevels.h"
#include "base/Mutex.h"
#include "framework/LogEntry.h"
#include "framework/LogRing.h"

namespace host {

// Receives entries, one at a time, on the thread that logs. Entries that write() itself logs are
// dropped. It must not wait for a peer, nor for a lock that any thread holds while it logs.
class LogSink {
 public:
  LogSink() = default;
  virtual ~LogSink();
  LogSink(const LogSink&) = delete;
  LogSink& operator=(const LogSink&) = delete;

  // Whether write() gets this entry.
  [[nodiscard]] bool takes(const LogEntryView& entry) const noexcept;
  virtual void write(const LogEntry& entry) = 0;  // an exception loses the entry

 protected:
  // From now on the entries up to this level are taken, whatever ApplicationLog::level() is. Below
  // 0: none.
  void takeUpTo(int level) noexcept;

 private:
  // By default those up to ApplicationLog::level(), and all for the system log.
  static constexpr int kDefault = 7;
  std::atomic<int> m_level{kDefault};
};

// The application log of the process, behind logAppUni. Without sink and keeper, entries are only
// counted. Owner: the process; never destroyed. Thread: any. Failure: an entry is lost; nothing
// throws, except where it is said.
class ApplicationLog {
 public:
  static constexpr int kDefaultLevel = kLogNote;
  // While there is a LogKeeper, entries up to this level are kept, whatever level() is.
  static constexpr int kKeptLevel = kLogInfo;
  // Bytes of an entry's text; of a longer one the entry keeps the beginning and the length. This is
  // the length that a system log accepts for a line. It keeps a peer's long texts from filling the
  // log.
  static constexpr std::size_t kLongestText = 1024;

  [[nodiscard]] static ApplicationLog& instance() noexcept;
  ApplicationLog(const ApplicationLog&) = delete;
  ApplicationLog& operator=(const ApplicationLog&) = delete;

  // Sinks get the entries up to the level. 0-6; other numbers are clamped.
  void setLevel(int level) noexcept;
  [[nodiscard]] int level() const noexcept { return m_level.load(std::memory_order_relaxed); }

  // The level up to which there is anybody who wants entries.
  [[nodiscard]] int wantedLevel() const noexcept {
    return m_wantedLevel.load(std::memory_order_relaxed);
  }

  // Whether a sink may take entries of kLogInfo and above.
  [[nodiscard]] bool showsDetails() const noexcept {
    return level() >= kLogInfo || m_detailedSinks.load(std::memory_order_relaxed) > 0;
  }

  void addSink(std::shared_ptr<LogSink> sink);
  // After the return no entry reaches the sink. REQUIRES: not called from a sink's write().
  void removeSink(const std::shared_ptr<LogSink>& sink);

  // Numbers the entry, adds wall time, origin and call, keeps it and hands it to the sinks.
  void write(LogEntryView& entry) noexcept;

  // The kept entries with larger numbers, in their order. Throws std::bad_alloc.
  [[nodiscard]] std::vector<LogEntry> kept(std::uint64_t after = 0) const;

  // Calls `see` with the same, while no entry is written: the next one has the next number. What
  // `see` logs is dropped. Throws std::bad_alloc and what `see` throws.
  void withKept(std::uint64_t after,
                const std::function<void(const std::vector<LogEntry>&)>& see) const;

 private:
  friend class LogKeeper;
  friend class LogSink;

  constexpr ApplicationLog() noexcept;

  void startKeeping() noexcept;
  void stopKeeping() noexcept;
  void updateWantedLevel() noexcept CLOCK_REQUIRES(m_mutex);
  void tellSinks(const LogEntryView& entry) const CLOCK_REQUIRES(m_mutex);
  [[nodiscard]] LogRing& ringFor(const LogEntryView& entry) CLOCK_REQUIRES(m_mutex);

  std::atomic<int> m_level{kDefaultLevel};
  std::atomic<int> m_wantedLevel{kDefaultLevel};
  std::atomic<int> m_detailedSinks{0};  // whose own level is kLogInfo or above
  mutable Mutex m_mutex;                // held while sinks write
  std::uint64_t m_lastNumber CLOCK_GUARDED_BY(m_mutex) = 0;
  std::vector<std::shared_ptr<LogSink>> m_sinks CLOCK_GUARDED_BY(m_mutex);
  int m_keepers CLOCK_GUARDED_BY(m_mutex) = 0;
  LogRing m_notes CLOCK_GUARDED_BY(m_mutex);
  LogRing m_details CLOCK_GUARDED_BY(m_mutex);
  LogRing m_programs CLOCK_GUARDED_BY(m_mutex);
};

// While one exists, the application log keeps its newest entries. The first one begins with none.
class LogKeeper {
 public:
  LogKeeper() noexcept { ApplicationLog::instance().startKeeping(); }
  ~LogKeeper() { ApplicationLog::instance().stopKeeping(); }
  LogKeeper(const LogKeeper&) = delete;
  LogKeeper& operator=(const LogKeeper&) = delete;
};

}  // namespace host
