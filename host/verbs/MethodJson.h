#pragma once

#include <chrono>

#include "verbs/Json.h"

class Method;

namespace host {

// The parameters of a method, {NAME: VALUE, ...}, each with its own type. Pure; thread: any.
[[nodiscard]] Json parametersJson(const Method& method);

// The telephone's time at an event: {"utc": TEXT, "utcSeconds": N, "local": TEXT, "localSeconds":
// N}. sinceEpoch: UTC; offset: of local time from UTC, east is positive. Pure; thread: any.
[[nodiscard]] Json eventTimeJson(std::chrono::seconds sinceEpoch, std::chrono::seconds offset);

}  // namespace host
