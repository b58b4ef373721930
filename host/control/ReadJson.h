#pragma once

#include <cstddef>
#include <string_view>

#include "control/Json.h"

namespace host {

// More than any request or answer is deep. Copying and writing JSON costs stack for each level.
inline constexpr std::size_t kDeepestJson = 32;

// JSON that came from outside. Discarded (Json::is_discarded) when the text is none, or deeper than
// kDeepestJson. Pure; thread: any.
[[nodiscard]] Json readJson(std::string_view text);

}  // namespace host
