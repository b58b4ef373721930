#pragma once

#include <string>

namespace host {

// Whether XML 1.0 can carry the text: well-formed UTF-8 without control characters (except tab,
// line feed and carriage return), surrogates, U+FFFE and U+FFFF.
[[nodiscard]] bool isXmlText(const std::string& text);

// The text as an element's content, from which a parser restores the same bytes, including carriage
// returns.
// REQUIRES: isXmlText.
[[nodiscard]] std::string escapedXmlText(const std::string& text);

// Whether the text is a plain element name: ASCII letters, digits, '_', '-' and '.', beginning with
// a letter or '_'.
[[nodiscard]] bool isXmlName(const std::string& text);

}  // namespace host
