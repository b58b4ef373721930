#pragma once

#include <string>

#include "verbs/Json.h"

namespace host {

// JSON on one line that is safe for a terminal: each control character is written as \uNNNN, also
// DEL and C1 (U+0080 to U+009F), which the library leaves as they are. Invalid UTF-8 becomes
// U+FFFD. Pure; thread: any.
[[nodiscard]] std::string jsonLine(const Json& json);

}  // namespace host
