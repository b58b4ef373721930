#pragma once

// The framework's application log. Levels: 0 fatal, 1 critical, 2 error, 3 warning, 4 start-up
// note, 5 information, 6 frequent trace. Thread: any; no operation throws.

// True when the level of `component` is `level` or higher. Call it before building a costly text.
bool loggingOnAppUni(const char* component, int level);

// Writes one entry, printf-style; dropped when the level is off. file, line: where in the source.
void logAppUni(const char* component, int level, const char* file, int line, const char* format,
               ...) __attribute__((format(printf, 5, 6)));

// Writes one entry of priority "notice" to the system log, printf-style.
void syslogger_notice(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Configured trace levels.
class TraceProfile {
 public:
  // The level 0-6 configured for `component`; 0 when tracing is not set up.
  static int GetLevel(const char* component);
};
