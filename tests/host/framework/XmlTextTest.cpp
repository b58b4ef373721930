#include "framework/XmlText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(XmlText, CarriesWhatXmlCan) {
  for (const char* const text :
       {"", "plain", "<&>\"']]>", "tab\tfeed\nreturn\r", "\x7F", "caf\xC3\xA9", "\xC2\x80",
        "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBD",
        "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(host::isXmlText(text)) << text;
  }
}

TEST(XmlText, DoesNotCarryControlCharacters) {
  for (char c = 0; c < 0x20; ++c) {
    const bool white = c == '\t' || c == '\n' || c == '\r';
    EXPECT_EQ(host::isXmlText(std::string("a") + c + "b"), white) << int{c};
  }
}

TEST(XmlText, DoesNotCarryWhatIsNotUtf8) {
  for (const char* const text :
       {"\x80", "\xBF", "\xC3", "\xC3x", "\xC3\xC3", "\xE2\x82", "\xE2\x82x", "\xF0\x9F\x98",
        "\xFF", "\xFE", "\xF8\x88\x80\x80\x80", "ok\xC3",
        // written too long
        "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
        // surrogates, what is no character, what is beyond the last one
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xF4\x90\x80\x80",
        "\xF7\xBF\xBF\xBF"}) {
    EXPECT_FALSE(host::isXmlText(text)) << testing::PrintToString(std::string(text));
  }
}

TEST(XmlText, EscapesWhatWouldBeMarkupOrBeLost) {
  EXPECT_EQ(host::escapedXmlText("a&b<c>d]]>\"e'\n\t\r"), "a&amp;b&lt;c&gt;d]]&gt;\"e'\n\t&#13;");
  EXPECT_EQ(host::escapedXmlText(""), "");
}

TEST(XmlText, TakesPlainNamesForElements) {
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
