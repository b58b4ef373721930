#include "runtime/QueuedLog.h"

#include <condition_variable>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "base/LogLevels.h"
#include "base/StartThread.h"
#include "base/WriteAll.h"
#include "runtime/LogLine.h"

namespace host {
namespace {

using Clock = LogLimitBySource::Clock;

constexpr std::size_t kGapLine = 256;  // bytes; more than the line about dropped ones needs

}  // namespace

// The queue of lines and the thread's work on it. A logging library's queue is of no use here: it
// waits for its thread without a limit at the end, and reserves memory for lines of any length.
class QueuedLog::Writer {
 public:
  Writer(Output output, LogLimitBySource limit, Now now)
      : m_output(std::move(output)), m_now(std::move(now)), m_limit(std::move(limit)) {
    m_waiting.reserve(kMostWaiting + kGapLine);
    m_writing.reserve(kMostWaiting + kGapLine);
  }

  void add(const LogEntry& entry) {
    const MutexLock lock(m_mutex);
    const auto now = m_now();
    putSummaries(now);
    if (m_limit.admits(entry, now)) put(entry);
    m_changed.notify_all();
  }

  // The thread's body.
  void work() {
    MutexLock lock(m_mutex);
    while (take() || !m_ending) {
      if (m_writing.empty()) {
        wait(lock);
      } else {
        lock.unlock();
        m_output.write(m_writing);
        lock.lock();
      }
    }
    m_ended = true;
    m_changed.notify_all();
  }

  // Writes the queued lines, and why no thread writes them, on this thread.
  void endHere(std::string_view reason) {
    {
      const MutexLock lock(m_mutex);
      m_ending = true;
      m_waiting.append("clockhost: ").append(reason).append("\n");
    }
    work();
  }

  // Ends the thread. False: it could not write all lines within the limit, and still runs.
  bool end(std::chrono::milliseconds limit) {
    MutexLock lock(m_mutex);
    m_ending = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock.native(), limit,
                              [this]() CLOCK_REQUIRES(m_mutex) { return m_ended; });
  }

 private:
  // Once a line was dropped, drops all until the thread takes the queue: the gap is in one place.
  void put(const LogEntry& entry) CLOCK_REQUIRES(m_mutex) {
    const std::string line = logLine(entry, m_output.style);
    if (m_dropped == 0 && m_waiting.size() + line.size() <= kMostWaiting) {
      m_waiting += line;
      return;
    }
    ++m_dropped;
    m_droppedLast = entry.wall;
  }

  void putSummaries(Clock::time_point now) CLOCK_REQUIRES(m_mutex) {
    for (const LogEntry& entry : m_limit.summaries(now)) put(entry);
  }

  // Moves the queued lines to those that are written next. False: there are none.
  bool take() CLOCK_REQUIRES(m_mutex) {
    m_writing.clear();
    try {
      putSummaries(m_ending ? Clock::time_point::max() : m_now());
      if (m_dropped != 0) m_waiting += logLine(gap(), m_output.style);
    } catch (const std::exception&) {
      // No memory: the numbers are lost.
    }
    m_dropped = 0;
    m_writing.swap(m_waiting);
    return !m_writing.empty();
  }

  LogEntry gap() const CLOCK_REQUIRES(m_mutex) {
    LogEntry entry;
    entry.wall = m_droppedLast;
    entry.level = kLogWarning;
    entry.component = "clockhost";
    entry.text = std::to_string(m_dropped) + " lines dropped here: " + std::string(m_output.slow);
    return entry;
  }

  // Until the next change, or the time of the next summary.
  void wait(MutexLock& lock) CLOCK_REQUIRES(m_mutex) {
    const auto next = m_limit.nextSummary();
    if (next == Clock::time_point::max()) {
      m_changed.wait(lock.native());
    } else {
      m_changed.wait_for(lock.native(), next - m_now());
    }
  }

  const Output m_output;
  const Now m_now;
  std::string m_writing;  // only for the thread; reserved at the start, like m_waiting
  Mutex m_mutex;
  std::condition_variable m_changed;
  LogLimitBySource m_limit CLOCK_GUARDED_BY(m_mutex);
  std::string m_waiting CLOCK_GUARDED_BY(m_mutex);      // whole lines
  std::size_t m_dropped CLOCK_GUARDED_BY(m_mutex) = 0;  // lines, since the last take()
  // Wall time of the last dropped line.
  std::chrono::nanoseconds m_droppedLast CLOCK_GUARDED_BY(m_mutex){0};
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  bool m_ended CLOCK_GUARDED_BY(m_mutex) = false;
};

QueuedLog::QueuedLog(int descriptor, LogLimitBySource limit, Now now)
    : QueuedLog({[descriptor](std::string_view lines) {
                   static_cast<void>(writeAll(descriptor, lines));  // false: the reader is gone
                 },
                 styleFor(descriptor), "standard error was not read"},
                std::move(limit), std::move(now)) {}

QueuedLog::QueuedLog(Output output, LogLimitBySource limit, Now now)
    : m_writer(std::make_shared<Writer>(std::move(output), std::move(limit), std::move(now))) {}

QueuedLog::~QueuedLog() {
  try {
    start();
  } catch (const std::exception& error) {
    m_writer->endHere(error.what());
    return;
  }
  if (m_writer->end(kLongestEnd)) {
    m_thread.join();
  } else {
    m_thread.detach();
  }
}

void QueuedLog::start() {
  const MutexLock lock(m_mutex);
  if (m_thread.joinable()) return;
  m_thread = startThread("writer of the log", [writer = m_writer] { writer->work(); });
}

void QueuedLog::write(const LogEntry& entry) {
  m_writer->add(entry);
  if (entry.level <= kLogWarning) start();
}

}  // namespace host
