#pragma once

#include <array>

namespace host {

// The names of the log levels, by number (Logging.h).
inline constexpr std::array<const char*, 7> kLogLevelNames = {
    "fatal", "critical", "error", "warning", "note", "info", "trace"};

}  // namespace host
