#include "base/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Utf8, DecodesEachCharacterWithItsLength) {
  const std::tuple<const char*, std::uint32_t, std::size_t> rows[] = {
      {"a", 'a', 1},
      {"\x7F", 0x7F, 1},
      {"\xC2\x80", 0x80, 2},
      {"\xDF\xBF", 0x7FF, 2},
      {"\xE0\xA0\x80", 0x800, 3},
      {"\xED\x9F\xBF", 0xD7FF, 3},
      {"\xEE\x80\x80", 0xE000, 3},
      {"\xEF\xBF\xBF", 0xFFFF, 3},
      {"\xF0\x90\x80\x80", 0x10000, 4},
      {"\xF4\x8F\xBF\xBF", 0x10FFFF, 4},
  };
  for (const auto& [text, code, length] : rows) {
    const host::Utf8Character character = host::utf8CharacterAt("x" + std::string(text) + "y", 1);
    EXPECT_EQ(character.code, code);
    EXPECT_EQ(character.length, length) << code;
  }
  EXPECT_EQ(host::utf8CharacterAt(std::string(1, '\0'), 0).length, 1U);
}

TEST(Utf8, RejectsInvalidSequences) {
  for (const char* const text :
       {"\x80", "\xBF", "\xC3", "\xC3x", "\xE2\x82", "\xE2\x82x", "\xF0\x9F\x98", "\xFF", "\xFE",
        "\xF8\x88\x80\x80\x80",
        // overlong
        "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
        // surrogates, and beyond U+10FFFF
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF"}) {
    EXPECT_EQ(host::utf8CharacterAt(text, 0).length, 0U) << testing::PrintToString(text);
  }
}

}  // namespace
