#include "framework/XmlText.h"

#include <algorithm>
#include <cstdint>

#include "base/Ascii.h"
#include "base/Utf8.h"

namespace host {
namespace {

bool isXmlCharacter(std::uint32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c != 0xFFFE && c != 0xFFFF;
}

bool isNameCharacter(char c) {
  return isLetter(c) || isDigit(c) || c == '_' || c == '-' || c == '.';
}

}  // namespace

bool isXmlText(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = utf8CharacterAt(text, at);
    if (character.length == 0 || !isXmlCharacter(character.code)) return false;
    at += character.length;
  }
  return true;
}

std::string escapedXmlText(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '\r':
        escaped += "&#13;";
        break;  // a parser would turn it into a line feed
      default:
        escaped += c;
    }
  }
  return escaped;
}

bool isXmlName(const std::string& text) {
  return !text.empty() && (isLetter(text.front()) || text.front() == '_') &&
         std::all_of(text.begin(), text.end(), isNameCharacter);
}

}  // namespace host
