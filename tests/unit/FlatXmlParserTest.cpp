// The parser that stands in for the host's in test programs without an XML library: its contract is
// the one of platform/XmlParser.h.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

#include "XmlParser.h"

namespace {

void start(void* events, const char* name, const char** /*attributes*/) {
  *static_cast<std::string*>(events) += "<" + std::string(name) + ">";
}
void end(void* events, const char* name) {
  *static_cast<std::string*>(events) += "</" + std::string(name) + ">";
}
void text(void* events, const char* bytes, int length) {
  *static_cast<std::string*>(events) +=
      "[" + std::string(bytes, static_cast<std::size_t>(length)) + "]";
}

TEST(FlatXmlParser, ReportsElementsAndEachTextInOnePieceBeforeTheEnd) {
  std::string events;
  XmlParser parser(&events, start, end, text);
  const std::pair<std::string, const char*> rows[] = {
      {"<?xml version=\"1.0\"?><s> <a/><b>1</b>\n</s>\n", "<s><a></a><b>[1]</b>[ \n]</s>"},
      {"<a x=\"1\" y='2'></a>", "<a></a>"},
      {"<a>&amp;amp;&lt;&gt;&quot;&apos;&#10;&#xd;</a>", "<a>[&amp;<>\"'\n\r]</a>"},
  };
  for (const auto& [document, expected] : rows) {
    events.clear();
    // The length counts, not the end of the text.
    const std::string longer = document + "<";
    EXPECT_TRUE(parser.parseMessage(longer.data(), static_cast<int>(document.size()))) << document;
    EXPECT_EQ(events, expected);
  }
}

TEST(FlatXmlParser, RefusesWhatIsNotWellFormed) {
  std::string events;
  XmlParser parser(&events, start, end, text);
  for (const std::string document :
       {"", " ", "text", "<a>", "</a>", "<a></b>", "<a><b></a></b>", "<a", "<>", "<a/><b/>",
        "<a/>text", "<a>&unknown;</a>", "<a>&amp</a>", "<a>&#0;</a>", "<a>&#200;</a>", "<a>&#;</a>",
        "<a>&#x;</a>"}) {
    EXPECT_FALSE(parser.parseMessage(document.data(), static_cast<int>(document.size())))
        << document;
  }
  EXPECT_FALSE(parser.parseMessage(nullptr, 0));
  EXPECT_FALSE(parser.parseMessage("<a/>", -1));
}

}  // namespace
