#include "runtime/LogLimitBySource.h"

#include <algorithm>

namespace host {
namespace {

// As in "ClockService: NtpClient.cpp:88".
std::string nameOf(const std::string& component, const std::string& file, int line) {
  if (file.empty()) return component.empty() ? "the system log" : component;
  return component + ": " + file.substr(file.rfind('/') + 1) + ":" + std::to_string(line);
}

const char* kindOf(const std::string& component, const std::string& file) {
  return file.empty() && !component.empty() ? "one program" : "one place in the code";
}

}  // namespace

LogLimitBySource::LogLimitBySource(std::size_t mostLines, Clock::duration window)
    : m_mostLines(mostLines), m_length(window) {}

bool LogLimitBySource::admits(const LogEntry& entry, Clock::time_point now) {
  const auto [found, isNew] = m_windows.try_emplace({entry.component, entry.file, entry.line});
  Window& window = found->second;
  if (isNew || (now >= window.end && window.suppressed == 0)) window = {now + m_length};
  if (window.written < m_mostLines) {
    ++window.written;
    return true;
  }
  ++window.suppressed;
  window.wall = entry.wall;
  m_nextSummary = std::min(m_nextSummary, window.end);
  return false;
}

std::vector<LogEntry> LogLimitBySource::summaries(Clock::time_point now) {
  std::vector<LogEntry> lines;
  if (now < m_nextSummary) return lines;
  m_nextSummary = Clock::time_point::max();
  for (auto& [source, window] : m_windows) {
    if (window.suppressed == 0) continue;
    if (now < window.end) {
      m_nextSummary = std::min(m_nextSummary, window.end);
      continue;
    }
    lines.push_back(summary(source, window));
    window = {};  // the source's next line starts a new window
  }
  return lines;
}

LogEntry LogLimitBySource::summary(const Source& source, const Window& window) const {
  const auto& [component, file, line] = source;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(m_length);
  LogEntry entry;
  entry.wall = window.wall;
  entry.level = kLogWarning;
  entry.component = "clockhost";
  entry.text = std::to_string(window.suppressed) + " lines suppressed of " +
               nameOf(component, file, line) + ": " + kindOf(component, file) + " may write " +
               std::to_string(m_mostLines) + " lines in " + std::to_string(seconds.count()) + " s";
  return entry;
}

}  // namespace host
