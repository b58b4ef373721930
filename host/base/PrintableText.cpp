#include "base/PrintableText.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "base/Utf8.h"

namespace host {
namespace {

constexpr std::size_t kLongestWord = 80;    // bytes of a quoted text
constexpr std::size_t kLongestLine = 1000;  // bytes of an error line

std::string lengthText(std::size_t bytes) {
  return " (" + std::to_string(bytes) + " bytes)";
}

void appendEscaped(std::string& line, std::string_view bytes) {
  for (const char byte : bytes) {
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(byte));
    line += byte == '\n' ? "\\n" : escape;
  }
}

}  // namespace

std::string_view beginningOf(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  for (std::size_t back = 1; back <= std::min<std::size_t>(most, 3); ++back) {
    const std::size_t length = utf8CharacterAt(text, most - back).length;
    if (length > back) return text.substr(0, most - back);
  }
  return text.substr(0, most);
}

std::string clippedText(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  return std::string(beginningOf(text, most)) + "..." + lengthText(text.size());
}

bool isControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

bool isPlainLine(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = utf8CharacterAt(text, at);
    if (character.length == 0 || isControl(character.code)) return false;
    at += character.length;
  }
  return true;
}

std::string escapedLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = utf8CharacterAt(text, at);
    const std::string_view bytes = text.substr(at, std::max<std::size_t>(character.length, 1));
    if (character.length == 0 || isControl(character.code)) {
      appendEscaped(line, bytes);
    } else {
      line += bytes;
    }
    at += bytes.size();
  }
  return line;
}

std::string quotedText(std::string_view text) {
  if (text.size() <= kLongestWord) return '"' + escapedLine(text) + '"';
  return '"' + escapedLine(beginningOf(text, kLongestWord)) + "...\"" + lengthText(text.size());
}

std::string errorLine(std::string_view program, std::string_view text) {
  return std::string(program) + ": " + escapedLine(clippedText(text, kLongestLine)) + '\n';
}

}  // namespace host
