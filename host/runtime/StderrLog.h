#pragma once

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <thread>

#include "framework/ApplicationLog.h"
#include "runtime/LogLimit.h"

namespace host {

// Writes the log to standard error, one line for each entry: the device's time, the level, the
// component, the text; in colour on a terminal. Bytes that are not printable are shown as \xNN, so
// that what came from outside stays within its line. A thread of its own writes, so a reader that
// does not read holds up nobody: lines wait for it up to a limit. Lines beyond it, and those that a
// source writes too often, are counted, and one line tells the number.
// Owner: the process's wiring. Thread: any. Failure: the constructor throws Error: no thread is
// left; a line that cannot be written is lost.
class StderrLog : public LogSink {
 public:
  using Now = std::function<LogLimit::Clock::time_point()>;

  // Bytes of lines that wait while as many again are being written. Both are reserved at the start,
  // so that logging needs no memory for them, and come to less than 100 KiB.
  static constexpr std::size_t kMostWaiting = std::size_t{48} * 1024;
  // How long the destructor waits for a reader: a shutdown takes less than a second.
  static constexpr std::chrono::milliseconds kLongestEnd{500};

  // The descriptor stays the caller's, and stays open for as long as the process.
  explicit StderrLog(int descriptor = STDERR_FILENO, LogLimit limit = LogLimit(),
                     Now now = &LogLimit::Clock::now);
  // Writes what waits and the numbers of what is lost, unless nobody reads for kLongestEnd.
  ~StderrLog() override;
  StderrLog(const StderrLog&) = delete;
  StderrLog& operator=(const StderrLog&) = delete;

  void write(const LogEntry& entry) override;

 private:
  class Writer;
  std::shared_ptr<Writer> m_writer;  // the thread's, too: it may have to be left behind
  std::thread m_thread;
};

}  // namespace host
