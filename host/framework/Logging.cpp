#include "Logging.h"

#include <cstdarg>
#include <exception>
#include <string>

#include "base/FormattedText.h"
#include "base/OrEmpty.h"
#include "framework/ApplicationLog.h"

namespace {

void write(host::LogEntry entry, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

void write(host::LogEntry entry, const char* format, va_list arguments) {
  entry.text = host::formattedText(format, arguments, host::ApplicationLog::kLongestText);
  host::ApplicationLog::instance().write(std::move(entry));
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
  try {
    host::LogEntry entry;
    entry.level = level;
    entry.component = host::orEmpty(component);
    entry.file = host::orEmpty(file);
    entry.line = line;
    write(std::move(entry), format, arguments);
  } catch (const std::exception&) {
    // No memory for the entry: it is lost.
  }
  va_end(arguments);
}

void syslogger_notice(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  try {
    host::LogEntry entry;
    entry.level = host::ApplicationLog::kDefaultLevel;
    entry.systemLog = true;
    write(std::move(entry), format, arguments);
  } catch (const std::exception&) {
    // No memory for the entry: it is lost.
  }
  va_end(arguments);
}
