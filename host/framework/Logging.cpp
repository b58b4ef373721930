#include "Logging.h"

#include <cstdarg>
#include <exception>
#include <utility>

#include "base/FormattedText.h"
#include "base/OrEmpty.h"
#include "framework/ApplicationLog.h"

namespace {

struct Source {
  int level;
  const char* component;
  const char* file;
  int line;
  bool systemLog;
};

void write(const Source& source, const char* format, va_list arguments) noexcept
    __attribute__((format(printf, 2, 0)));

void write(const Source& source, const char* format, va_list arguments) noexcept try {
  host::LogEntry entry;
  entry.level = source.level;
  entry.component = host::orEmpty(source.component);
  entry.file = host::orEmpty(source.file);
  entry.line = source.line;
  entry.text = host::formattedText(format, arguments, host::ApplicationLog::kLongestText);
  entry.systemLog = source.systemLog;
  host::ApplicationLog::instance().write(std::move(entry));
} catch (const std::exception&) {
  // No memory for the entry: it is lost.
}

}  // namespace

// All components share one level.
bool loggingOnAppUni(const char* /*component*/, int level) {
  return level <= host::ApplicationLog::instance().level();
}

int TraceProfile::GetLevel(const char* /*component*/) {
  return host::ApplicationLog::instance().level();
}

void logAppUni(const char* component, int level, const char* file, int line, const char* format,
               ...) {
  if (!loggingOnAppUni(component, level)) return;
  va_list arguments;
  va_start(arguments, format);
  write({level, component, file, line, false}, format, arguments);
  va_end(arguments);
}

void syslogger_notice(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write({host::ApplicationLog::kDefaultLevel, nullptr, nullptr, 0, true}, format, arguments);
  va_end(arguments);
}
