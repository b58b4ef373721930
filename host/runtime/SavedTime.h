#pragma once

#include <optional>
#include <string>

namespace host {

// A warning about the saved time that the settings contain: it is not a UTC string, or it lies
// before the time of a new telephone (2016-06-16) or after the last date that can be set (the end
// of 2037). Empty: nothing is wrong. Pure; thread: any.
[[nodiscard]] std::optional<std::string> oddSavedTime(const std::string& saved);

}  // namespace host
