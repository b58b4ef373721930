#pragma once

#include <cstddef>
#include <string_view>

// Characters of ASCII, whatever the locale.
namespace host {

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Whether the text has a digit for each '0' of the shape and equals the shape elsewhere.
constexpr bool hasShape(std::string_view text, std::string_view shape) {
  if (text.size() != shape.size()) return false;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] == '0' ? !isDigit(text[i]) : text[i] != shape[i]) return false;
  }
  return true;
}

}  // namespace host
