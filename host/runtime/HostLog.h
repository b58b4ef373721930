#pragma once

#include <filesystem>
#include <memory>

#include "base/Descriptor.h"
#include "framework/ApplicationLog.h"
#include "runtime/QueuedLog.h"

namespace host {

class EventLoop;
class LogFile;

// During its lifetime, the log is kept, and goes to standard error, or to a file. The destructor
// writes what is still waiting. Owner: main. Thread: the framework thread. Failure: the constructor
// throws Error.
class HostLog {
 public:
  // file: empty for standard error. With a file, SIGHUP is blocked for all threads that are started
  // later, and no longer ignored. REQUIRES: no other thread runs.
  explicit HostLog(const std::filesystem::path& file);
  ~HostLog();
  HostLog(const HostLog&) = delete;
  HostLog& operator=(const HostLog&) = delete;

  // From now on lines are written as they come. Until then those below a warning wait, because the
  // start of the host would wait for the thread that writes them. Throws Error.
  void start() { m_sink->start(); }

  // From now on SIGHUP opens the file again. Without a file, does nothing.
  void reopenOnHangup(EventLoop& loop);

 private:
  const LogKeeper m_keeper;
  std::shared_ptr<LogFile> m_file;  // null: standard error
  Descriptor m_hangups;             // readable when SIGHUP has arrived
  std::shared_ptr<QueuedLog> m_sink;
};

}  // namespace host
