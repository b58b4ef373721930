#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// One entry of the application log.
template <class Text>
struct BasicLogEntry {
  std::uint64_t number = 0;          // from 1, without gaps, in the order of writing
  std::chrono::nanoseconds wall{0};  // the device's wall time, since 1970-01-01 UTC
  int level = 0;                     // 0-6, as in Logging.h
  Text component{};                  // empty for the system log
  Text file{};
  int line = 0;
  Text text{};             // clipped at ApplicationLog::kLongestText
  bool systemLog = false;  // written by syslogger_notice
  Text origin{};           // on whose behalf it was written, see base/Origin.h
  std::uint32_t call = 0;  // within which remote call of the origin, see callHere()
};

using LogEntry = BasicLogEntry<std::string>;
using LogEntryView = BasicLogEntry<std::string_view>;  // its texts are borrowed

[[nodiscard]] inline LogEntry copyOf(const LogEntryView& entry) {
  return {entry.number,
          entry.wall,
          entry.level,
          std::string(entry.component),
          std::string(entry.file),
          entry.line,
          std::string(entry.text),
          entry.systemLog,
          std::string(entry.origin),
          entry.call};
}

}  // namespace host
