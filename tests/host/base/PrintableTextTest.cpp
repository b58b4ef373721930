#include "base/PrintableText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

TEST(PrintableText, DoesNotCutInsideACharacter) {
  const std::string text = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80z";
  const std::pair<std::size_t, std::size_t> rows[] = {{0, 0},   {1, 1},   {2, 1},  {3, 3}, {4, 3},
                                                      {5, 3},   {6, 6},   {7, 6},  {8, 6}, {9, 6},
                                                      {10, 10}, {11, 11}, {12, 11}};
  for (const auto& [most, kept] : rows)
    EXPECT_EQ(host::beginningOf(text, most), text.substr(0, kept)) << most;
}

TEST(PrintableText, CutsInvalidUtf8Anywhere) {
  EXPECT_EQ(host::beginningOf("\xFF\xFF\xFF", 2), "\xFF\xFF");
  EXPECT_EQ(host::beginningOf("\x80\x80\x80\x80\x80", 4), "\x80\x80\x80\x80");
  EXPECT_EQ(host::beginningOf("\xC3"
                              "ab",
                              1),
            "\xC3");
}

TEST(PrintableText, ShowsTheLengthOfAClippedText) {
  EXPECT_EQ(host::clippedText("abcd", 4), "abcd");
  EXPECT_EQ(host::clippedText("abcde", 4), "abcd... (5 bytes)");
  EXPECT_EQ(host::clippedText("", 0), "");
  EXPECT_EQ(host::clippedText("abc\xC3\xBC", 4), "abc... (5 bytes)");
}

TEST(PrintableText, EscapesControlCharactersAndInvalidUtf8) {
  EXPECT_EQ(host::escapedLine("plain \"\\ caf\xC3\xA9"), "plain \"\\ caf\xC3\xA9");
  EXPECT_EQ(host::escapedLine("a\nb\rc\td\0e\x1B[31m\x7F"s),
            "a\\nb\\x0Dc\\x09d\\x00e\\x1B[31m\\x7F");
  EXPECT_EQ(host::escapedLine("\xC2\x80\xC2\x9F\xC2\xA0"), "\\xC2\\x80\\xC2\\x9F\xC2\xA0");
  EXPECT_EQ(host::escapedLine("\xFF\xC3(\xE2\x82"), "\\xFF\\xC3(\\xE2\\x82");
  EXPECT_EQ(host::escapedLine(""), "");
}

TEST(PrintableText, QuotesTheBeginningOfALongText) {
  EXPECT_EQ(host::quotedText("a\nb"), "\"a\\nb\"");
  EXPECT_EQ(host::quotedText(std::string(80, 'x')), '"' + std::string(80, 'x') + '"');
  EXPECT_EQ(host::quotedText(std::string(81, 'x')),
            '"' + std::string(80, 'x') + "...\" (81 bytes)");
}

TEST(PrintableText, PrintsAnErrorAsOneLine) {
  EXPECT_EQ(host::errorLine("clockctl", "no\nhost"), "clockctl: no\\nhost\n");
  EXPECT_EQ(host::errorLine("clockhost", std::string(1 << 20, 'x')),
            "clockhost: " + std::string(1000, 'x') + "... (1048576 bytes)\n");
}

}  // namespace
