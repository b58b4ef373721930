#pragma once

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <thread>

#include "base/Mutex.h"
#include "framework/ApplicationLog.h"
#include "runtime/LogLimitBySource.h"
#include "runtime/LogLine.h"

namespace host {

// Writes the log to standard error or to another output, one logLine for each entry. A separate
// thread writes, so that a reader that does not read delays no caller: lines are queued up to a
// limit. Lines beyond it are dropped, and so are those of a source beyond its LogLimitBySource; one
// line reports how many. Owner: main. Thread: any. Failure: start() throws Error when no thread can
// be started; a line that cannot be written is lost.
class QueuedLog : public LogSink {
 public:
  using Now = std::function<LogLimitBySource::Clock::time_point()>;

  // Bytes of queued lines, while as many are being written. Both buffers are reserved at the start,
  // so that queueing needs no memory; together they take less than 100 KiB.
  static constexpr std::size_t kMostWaiting = std::size_t{48} * 1024;
  // How long the destructor waits for a reader, so that a shutdown takes less than a second.
  static constexpr std::chrono::milliseconds kLongestEnd{500};

  struct Output {
    std::function<void(std::string_view lines)> write;  // on the thread; may wait; does not throw
    LogStyle style;
    std::string_view slow;  // why lines may be dropped: "standard error was not read"
  };
  explicit QueuedLog(Output output, LogLimitBySource limit = LogLimitBySource(),
                     Now now = &LogLimitBySource::Clock::now);

  // The caller keeps the descriptor open until the process ends.
  explicit QueuedLog(int descriptor = STDERR_FILENO, LogLimitBySource limit = LogLimitBySource(),
                     Now now = &LogLimitBySource::Clock::now);
  // Writes the queued lines and the numbers of lost ones, unless the reader takes nothing for
  // kLongestEnd. Without a thread it waits for the reader.
  ~QueuedLog() override;
  QueuedLog(const QueuedLog&) = delete;
  QueuedLog& operator=(const QueuedLog&) = delete;

  // Starts the thread, unless it runs. Until then lines wait. A warning or an error starts it too.
  void start();

  void write(const LogEntry& entry) override;

 private:
  class Writer;
  const std::shared_ptr<Writer> m_writer;  // shared with the thread, which may outlive this object
  Mutex m_mutex;
  std::thread m_thread CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
