#include "platform/XmlText.h"

#include <algorithm>
#include <cstdint>

namespace host {
namespace {

// The sequences of UTF-8 by their length: lead byte and smallest character.
struct Sequence {
  std::size_t length;
  std::uint32_t first;  // a smaller one is written too long
  unsigned char mask, lead;
};
constexpr Sequence kSequences[] = {
    {1, 0, 0x80, 0x00}, {2, 0x80, 0xE0, 0xC0}, {3, 0x800, 0xF0, 0xE0}, {4, 0x10000, 0xF8, 0xF0}};

bool isXmlCharacter(std::uint32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
  return !surrogate && c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF;
}

unsigned char byteAt(const std::string& text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

// The length of the XML character at `at`; 0: there is none.
std::size_t characterLength(const std::string& text, std::size_t at) {
  const unsigned char lead = byteAt(text, at);
  const auto* kind = std::find_if(std::begin(kSequences), std::end(kSequences),
                                  [=](const Sequence& s) { return (lead & s.mask) == s.lead; });
  if (kind == std::end(kSequences) || text.size() - at < kind->length) return 0;
  std::uint32_t character = lead & static_cast<unsigned char>(~kind->mask);
  for (std::size_t i = 1; i < kind->length; ++i) {
    const unsigned char next = byteAt(text, at + i);
    if ((next & 0xC0U) != 0x80U) return 0;
    character = (character << 6U) | (next & 0x3FU);
  }
  return character >= kind->first && isXmlCharacter(character) ? kind->length : 0;
}

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isNameCharacter(char c) {
  return isLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
}

}  // namespace

bool isXmlText(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = characterLength(text, at);
    if (length == 0) return false;
    at += length;
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
        break;  // a bare one would come back as a line feed
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
