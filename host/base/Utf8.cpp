#include "base/Utf8.h"

#include <algorithm>
#include <iterator>

namespace host {
namespace {

constexpr std::uint32_t kLastCharacter = 0x10FFFF;

// The sequences of UTF-8 by their length: lead byte and smallest character.
struct Sequence {
  std::size_t length;
  std::uint32_t first;  // a smaller one is overlong
  unsigned char mask, lead;
};
constexpr Sequence kSequences[] = {
    {1, 0, 0x80, 0x00}, {2, 0x80, 0xE0, 0xC0}, {3, 0x800, 0xF0, 0xE0}, {4, 0x10000, 0xF8, 0xF0}};

bool isCharacter(std::uint32_t code) {
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return !surrogate && code <= kLastCharacter;
}

unsigned char byteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

}  // namespace

Utf8Character utf8CharacterAt(std::string_view text, std::size_t at) {
  const unsigned char lead = byteAt(text, at);
  const auto* kind = std::find_if(std::begin(kSequences), std::end(kSequences),
                                  [=](const Sequence& s) { return (lead & s.mask) == s.lead; });
  if (kind == std::end(kSequences) || text.size() - at < kind->length) return {};
  std::uint32_t code = lead & static_cast<unsigned char>(~kind->mask);
  for (std::size_t i = 1; i < kind->length; ++i) {
    const unsigned char next = byteAt(text, at + i);
    if ((next & 0xC0U) != 0x80U) return {};
    code = (code << 6U) | (next & 0x3FU);
  }
  if (code < kind->first || !isCharacter(code)) return {};
  return {code, kind->length};
}

}  // namespace host
