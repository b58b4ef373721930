#pragma once

#include <optional>
#include <string>

namespace host {

// What a person should hear of the time that is saved for a restart, as the settings hold it: that
// it is no UTC string, or far off, earlier than a new telephone's (2016-06-16) or later than a
// date can be set (the end of 2037). Empty: nothing. Pure; thread: any.
[[nodiscard]] std::optional<std::string> oddSavedTime(const std::string& saved);

}  // namespace host
