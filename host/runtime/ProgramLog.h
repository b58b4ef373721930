#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "base/Descriptor.h"
#include "base/IoLoop.h"
#include "base/Mutex.h"
#include "runtime/LogLimitBySource.h"

namespace host {

// During its lifetime, each program of the device that starts (Process) gets a pipe as standard
// output and standard error, and each line that it writes there is an entry of the log. Owner:
// main. Thread: the loop's, except open(). Failure: the program has the host's own standard output
// and error, with a log line; if the loop cannot watch a pipe, it is closed, with a log line.
class ProgramLog {
 public:
  // Of one program, in LogLimitBySource::kWindow.
  static constexpr std::size_t kMostLines = 100;
  // Pipes at a time. A program that has left its process group may keep one open.
  static constexpr std::size_t kMostPipes = 16;
  // Read at a time, so that a program that writes without end does not delay other work.
  static constexpr std::size_t kRead = 4096;  // bytes

  // REQUIRES: the loop runs no task after the destructor.
  explicit ProgramLog(IoLoop& loop, LogLimitBySource limit = LogLimitBySource(kMostLines));
  // Logs what the programs have written so far.
  ~ProgramLog();
  ProgramLog(const ProgramLog&) = delete;
  ProgramLog& operator=(const ProgramLog&) = delete;

  // The end of a new pipe for the program to write to, close-on-exec. Any thread. Failure: an
  // invalid descriptor, and errno. REQUIRES: the object is not being destroyed.
  [[nodiscard]] Descriptor open(const std::string& program);

 private:
  class Pipe;

  void watchNew();
  void serve(Pipe& pipe);
  void log(const std::string& program, std::string_view line);
  void logSuppressed(LogLimitBySource::Clock::time_point now);

  IoLoop& m_loop;
  const std::shared_ptr<IoLoop::Task> m_watchNew;
  LogLimitBySource m_limit;
  IoLoop::Timer m_summary;
  Mutex m_mutex;
  std::list<Pipe> m_pipes CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
