#pragma once

#include <cstddef>
#include <string>

#include "verbs/Json.h"

namespace host {

// A member as text on one line, without anything that a terminal would interpret; empty when there
// is none.
[[nodiscard]] std::string memberText(const Json& object, const char* name);

// Seconds east of UTC as "UTC-05:00"; another value as memberText.
[[nodiscard]] std::string offsetText(const Json& object, const char* name);

[[nodiscard]] std::string padded(std::string text, std::size_t width);

}  // namespace host
