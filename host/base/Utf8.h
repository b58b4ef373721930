#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace host {

// A character of a UTF-8 text.
struct Utf8Character {
  std::uint32_t code = 0;
  std::size_t length = 0;  // bytes; 0: the bytes are not UTF-8
};

// The character at `at`: well-formed, not overlong, no surrogate, up to U+10FFFF.
// REQUIRES: at < text.size().
[[nodiscard]] Utf8Character utf8CharacterAt(std::string_view text, std::size_t at);

}  // namespace host
