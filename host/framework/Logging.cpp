#include "Logging.h"

#include <time.h>

#include <array>
#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <span>
#include <string_view>

#include "base/FormattedText.h"
#include "base/LogLevels.h"
#include "base/OrEmpty.h"
#include "base/Origin.h"
#include "base/PrintableText.h"
#include "framework/ApplicationLog.h"
#include "framework/QueryLogLimit.h"

namespace {

using host::ApplicationLog;

// The text of one entry, clipped as by host::clippedText, but without allocation.
class EntryText {
 public:
  EntryText(const char* format, va_list arguments) noexcept __attribute__((format(printf, 2, 0))) {
    m_size = host::formatInto(std::span(m_bytes).first(kMost + 2), format, arguments);
    if (m_size > kMost) clip();
  }

  [[nodiscard]] std::string_view view() const noexcept { return {m_bytes.data(), m_size}; }

 private:
  static constexpr std::size_t kMost = ApplicationLog::kLongestText;
  static constexpr std::size_t kLengthText = 32;  // bytes of "... (4000000 bytes)"

  void clip() noexcept {
    const std::size_t whole = m_size;
    m_size = host::beginningOf({m_bytes.data(), kMost + 1}, kMost).size();
    m_size += static_cast<std::size_t>(
        std::snprintf(m_bytes.data() + m_size, kLengthText, "... (%zu bytes)", whole));
  }

  std::array<char, kMost + kLengthText> m_bytes;
  std::size_t m_size;
};

host::LogEntryView entryOf(const char* component, int level, const char* file, int line) {
  host::LogEntryView entry;
  entry.level = level;
  entry.component = host::orEmpty(component);
  entry.file = host::orEmpty(file);
  entry.line = line;
  return entry;
}

thread_local host::QueryLogLimit t_queries;

// Read often: the exact time would cost as much as an entry.
std::chrono::seconds realSecond() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return std::chrono::seconds(now.tv_sec);
}

// Whether the entry is about a remote call that changes nothing, and only kept.
bool isKeptQuery(int level) {
  return level >= host::kLogInfo && host::callHere() != 0 && host::causeHere().act.empty() &&
         !ApplicationLog::instance().showsDetails();
}

bool exceedsQueryLimit(int level) {
  if (level >= host::kLogInfo && host::asksHere()) return true;
  if (!isKeptQuery(level)) return false;
  if (!t_queries.admits(realSecond)) return true;
  if (const unsigned dropped = t_queries.takeDropped()) {
    logAppUni("clockhost", host::kLogInfo, __FILE__, __LINE__,
              "%u entries about calls that change nothing were not kept: more than %u in a second",
              dropped, host::QueryLogLimit::kMost);
  }
  return false;
}

}  // namespace

// All components share one level.
bool loggingOnAppUni(const char* /*component*/, int level) {
  return level <= ApplicationLog::instance().wantedLevel();
}

int TraceProfile::GetLevel(const char* /*component*/) {
  return ApplicationLog::instance().wantedLevel();
}

void logAppUni(const char* component, int level, const char* file, int line, const char* format,
               ...) {
  if (!loggingOnAppUni(component, level) || exceedsQueryLimit(level)) return;
  va_list arguments;
  va_start(arguments, format);
  const EntryText text(format, arguments);
  va_end(arguments);
  host::LogEntryView entry = entryOf(component, level, file, line);
  entry.text = text.view();
  ApplicationLog::instance().write(entry);
}

void syslogger_notice(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const EntryText text(format, arguments);
  va_end(arguments);
  host::LogEntryView entry = entryOf(nullptr, ApplicationLog::kDefaultLevel, nullptr, 0);
  entry.text = text.view();
  entry.systemLog = true;
  ApplicationLog::instance().write(entry);
}
