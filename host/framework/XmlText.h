#pragma once

#include <string>

namespace host {

// What XML 1.0 can carry: well-formed UTF-8 without control characters (tab, line feed and carriage
// return excepted), without surrogates, U+FFFE and U+FFFF.
[[nodiscard]] bool isXmlText(const std::string& text);

// The text as content of an element: a parser returns the same bytes, including carriage returns.
// REQUIRES: isXmlText.
[[nodiscard]] std::string escapedXmlText(const std::string& text);

// An element name: ASCII letters, digits, '_', '-' and '.', beginning with a letter or '_'.
[[nodiscard]] bool isXmlName(const std::string& text);

}  // namespace host
