#pragma once

#include "Logging.h"

// One entry of the application log, with its source file and line. The arguments are evaluated only
// when the component logs at this level.
#define LOG_ENTRY(component, level, ...)                            \
  do {                                                              \
    if (loggingOnAppUni(component, level))                          \
      logAppUni(component, level, __FILE__, __LINE__, __VA_ARGS__); \
  } while (false)

#define CLOCK_LOG(level, ...) LOG_ENTRY("ClockService", level, __VA_ARGS__)
#define INVOKER_LOG(level, ...) LOG_ENTRY("ClockServiceInvoker", level, __VA_ARGS__)

// Levels of the application log that this plug-in uses, see Logging.h.
enum LogLevel : int { logError = 2, logStartUp = 4, logInformation = 5, logTrace = 6 };
