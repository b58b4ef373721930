#pragma once

#include <cstddef>
#include <string_view>

#include "verbs/Json.h"

namespace host {

// Deeper than any request or answer. Copying and writing JSON takes stack for each level.
inline constexpr std::size_t kDeepestJson = 32;

// Reads JSON from outside. Discarded (Json::is_discarded) when the text is not JSON, or is deeper
// than kDeepestJson. Pure; thread: any.
[[nodiscard]] Json readJson(std::string_view text);

// More members, values and array items than any control request holds. An object keeps its members
// in a list, so that reading many of them takes quadratic time.
inline constexpr std::size_t kMostInRequest = 64;

// Reads a control request, a JSON object. Throws Error: not an object, too deep, more than
// kMostInRequest in it, or a member twice in one object, which two readers could read differently.
// Pure; thread: any.
[[nodiscard]] Json readRequest(std::string_view text);

}  // namespace host
