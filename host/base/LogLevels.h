#pragma once

#include <array>

namespace host {

// The levels that the host logs at, see Logging.h.
inline constexpr int kLogError = 2;
inline constexpr int kLogWarning = 3;
inline constexpr int kLogNote = 4;
inline constexpr int kLogInfo = 5;
inline constexpr int kLogTrace = 6;  // the highest

// The names of all levels, by number.
inline constexpr std::array<const char*, 7> kLogLevelNames = {
    "fatal", "critical", "error", "warning", "note", "info", "trace"};

}  // namespace host
