#pragma once

#include <chrono>
#include <string>

namespace host {

// Seconds since 1970-01-01 UTC as "2026-03-08T06:59:50Z". Pure; thread: any.
[[nodiscard]] std::string instantText(std::chrono::seconds sinceEpoch);

// Of local time from UTC, under the process's TZ; east is positive. Thread: any.
[[nodiscard]] std::chrono::seconds offsetAt(std::chrono::seconds sinceEpoch);

}  // namespace host
