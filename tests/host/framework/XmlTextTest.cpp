#include "framework/XmlText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(XmlText, IsUtf8WithoutNonCharacters) {
  for (const char* const text : {"", "plain", "<&>\"']]>", "\x7F", "caf\xC3\xA9", "\xC2\x80",
                                 "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(host::isXmlText(text)) << text;
  }
  for (const char* const text : {"\x80", "ok\xC3", "\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    EXPECT_FALSE(host::isXmlText(text)) << testing::PrintToString(std::string(text));
  }
}

TEST(XmlText, HasNoControlCharactersButWhiteSpace) {
  for (char c = 0; c < 0x20; ++c) {
    const bool white = c == '\t' || c == '\n' || c == '\r';
    EXPECT_EQ(host::isXmlText(std::string("a") + c + "b"), white) << int{c};
  }
}

TEST(XmlText, IsEscapedAgainstMarkupAndNormalisedLineEnds) {
  EXPECT_EQ(host::escapedXmlText("a&b<c>d]]>\"e'\n\t\r"), "a&amp;b&lt;c&gt;d]]&gt;\"e'\n\t&#13;");
  EXPECT_EQ(host::escapedXmlText(""), "");
}

TEST(XmlText, HasPlainElementNames) {
  for (const char* const name : {"a", "DateFormat", "_x", "a-b.c_9"}) {
    EXPECT_TRUE(host::isXmlName(name)) << name;
  }
  for (const char* const name :
       {"", "9a", "-a", ".a", "a b", "a<", "a:b", "a\n", "caf\xC3\xA9", "a/"}) {
    EXPECT_FALSE(host::isXmlName(name)) << name;
  }
  EXPECT_FALSE(host::isXmlName(std::string("a\0b", 3)));
}

}  // namespace
