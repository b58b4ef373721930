#pragma once

#include <string>

#include "verbs/Json.h"

namespace host {

// JSON on one line, for a terminal, too: each control character in the notation \uNNNN, DEL and
// those of C1 (U+0080 to U+009F) as well, which the library writes as they are; what is not UTF-8
// is replaced. Pure; thread: any.
[[nodiscard]] std::string jsonLine(const Json& json);

}  // namespace host
