#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/Mutex.h"

namespace host {

// A change of the telephone's clock, zone or settings.
struct Change {
  std::chrono::seconds time{0};  // system time after the change, since 1970-01-01 UTC
  std::string what;              // "clock", "zone", or the setting's key in the store
  std::string cause;             // "set simple-time", "call setDate", "clock jump", "time server"
  std::string who;               // "uid 1000, pid 4711" or "device"
  std::string from;              // of the clock: "2026-03-08T06:59:50Z"
  std::string to;
};

// The newest changes, at least kKept of them: in the file `history` of the state folder and the one
// before it, `history.1`, or in memory. Changes wait in memory until write(), a list or the end of
// the object, so that add() needs no file I/O; list() reads both files.
// They are written without a sync: a power cut may lose the latest ones. Owner: the device.
// Thread: any. Failure: changes that cannot be written stay in memory, the newest kKept of them,
// until a later write succeeds, with one line in the log. A damaged line is left out of the list.
class History {
 public:
  static constexpr const char* kFileName = "history";
  static constexpr std::size_t kKept = 1000;
  static constexpr std::size_t kLongestText = 200;  // bytes of each text

  History() = default;  // in memory
  explicit History(const std::filesystem::path& folder) : m_file((folder / kFileName).string()) {}
  ~History();  // writes all
  History(const History&) = delete;
  History& operator=(const History&) = delete;

  void add(Change change);

  // Sets the function that schedules write() when a change begins to wait. Until then add()
  // schedules nothing, so that the start writes no file.
  void writeWith(std::function<void()> later);
  void write();

  // The newest `most`, 1 to kKept, oldest first. Throws Error when a file cannot be read.
  [[nodiscard]] std::deque<Change> list(std::size_t most);

 private:
  // Lines of the file, the newest kKept of them.
  struct Lines {
    std::string text;
    std::size_t count = 0;
    void add(std::string_view more, std::size_t added);
  };

  void writeWaiting() CLOCK_REQUIRES(m_fileMutex);
  void takeWaiting() CLOCK_REQUIRES(m_fileMutex);
  void append() CLOCK_REQUIRES(m_fileMutex);

  const std::string m_file;  // empty: in memory
  Mutex m_fileMutex;         // held while a file is read or written, so that add() need not wait
  Lines m_taken CLOCK_GUARDED_BY(m_fileMutex);  // from m_waiting; not yet in the file
  std::optional<std::size_t> m_inFile CLOCK_GUARDED_BY(m_fileMutex);  // lines; empty: not counted
  bool m_failed CLOCK_GUARDED_BY(m_fileMutex) = false;  // logged, until a write succeeds
  Mutex m_mutex;                                        // taken after m_fileMutex
  Lines m_waiting CLOCK_GUARDED_BY(m_mutex);
  std::function<void()> m_later CLOCK_GUARDED_BY(m_mutex);  // calls write() later
  bool m_expectsWrite CLOCK_GUARDED_BY(m_mutex) = false;    // m_later was called
};

}  // namespace host
