#pragma once

#include <memory>

#include "platform/LogBook.h"

namespace spdlog::sinks {
class sink;
}

namespace host {

// Writes the log to standard error, one line for each entry: the device's time, the level, the
// component, the text; in colour on a terminal. Bytes that are not printable are shown as \xNN, so
// that what came from outside stays within its line.
// Owner: the log book. Thread: any. Failure: a line that cannot be written is lost.
class StderrLog : public LogSink {
 public:
  StderrLog();
  ~StderrLog() override;
  void write(const LogEntry& entry) override;

 private:
  std::unique_ptr<spdlog::sinks::sink> m_sink;
};

// The name of a level, 0-6: "fatal", "critical", "error", "warning", "note", "info", "trace".
[[nodiscard]] const char* levelName(int level);

}  // namespace host
