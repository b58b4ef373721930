// The logs, on standard error.
#include "Logging.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kLevel = 3;  // warnings and errors

}  // namespace

bool loggingOnAppUni(const char* /*component*/, int level) {
  return level <= kLevel;
}

void logAppUni(const char* component, int level, const char* file, int line, const char* format,
               ...) {
  if (level > kLevel) return;
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  text[std::strcspn(text, "\n")] = '\0';  // some texts end with one
  std::fprintf(stderr, "%s %d %s:%d %s\n", component, level, file, line, text);
}

void syslogger_notice(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}

int TraceProfile::GetLevel(const char* /*component*/) {
  return kLevel;
}
