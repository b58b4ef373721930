#pragma once

#include <cstddef>
#include <string_view>

#include "verbs/Json.h"

namespace host {

// More than any request or answer is deep. Copying and writing JSON costs stack for each level.
inline constexpr std::size_t kDeepestJson = 32;

// JSON that came from outside. Discarded (Json::is_discarded) when the text is none, or deeper than
// kDeepestJson. Pure; thread: any.
[[nodiscard]] Json readJson(std::string_view text);

// Far more than any control request holds: members, their values and the items of arrays. Objects
// keep their members in a list, so that many of them would cost time by their square.
inline constexpr std::size_t kMostInRequest = 64;

// A control request: a JSON object. Throws Error with one line for people: no object, too deep,
// more than kMostInRequest in it, or a member twice in one object, which two readers would read
// differently. Pure; thread: any.
[[nodiscard]] Json readRequest(std::string_view text);

}  // namespace host
