// Of the parser that stands in for the platform's in programs without an XML library.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

#include "XmlParser.h"

namespace {

void started(void* events, const char* name, const char** /*attributes*/) {
  *static_cast<std::string*>(events) += std::string("<") + name + ">";
}
void ended(void* events, const char* name) {
  *static_cast<std::string*>(events) += std::string("</") + name + ">";
}
void read(void* events, const char* text, int length) {
  *static_cast<std::string*>(events) +=
      "[" + std::string(text, static_cast<std::size_t>(length)) + "]";
}

// Whether the document is well formed, and its events.
std::pair<bool, std::string> parse(const std::string& document) {
  std::string events;
  XmlParser parser(&events, started, ended, read);
  const bool wellFormed = parser.parseMessage(document.data(), static_cast<int>(document.size()));
  return {wellFormed, events};
}

TEST(FlatXmlParser, TextComesInOnePieceJustBeforeTheEnd) {
  const struct {
    const char* document;
    const char* events;
  } table[] = {
      {"<a/>", "<a></a>"},
      {"<a></a>", "<a></a>"},
      {"<a>text</a>", "<a>[text]</a>"},
      {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><s><a>1</a><b>2</b></s>",
       "<s><a>[1]</a><b>[2]</b></s>"},
      {"<s> <a>1</a> </s>\n", "<s><a>[1]</a>[  ]</s>"},
      {"<a x=\"1\" y='2'>t</a>", "<a>[t]</a>"},
      {"<a>a&amp;b&lt;c&gt;d&quot;e&apos;f&#10;g&#xd;h</a>", "<a>[a&b<c>d\"e'f\ng\rh]</a>"},
      {"<a>&amp;amp;</a>", "<a>[&amp;]</a>"},
  };
  for (const auto& row : table) {
    EXPECT_TRUE(parse(row.document).first) << row.document;
    EXPECT_EQ(parse(row.document).second, row.events) << row.document;
  }
}

TEST(FlatXmlParser, DocumentThatIsNotWellFormedIsRefused) {
  for (const char* const document :
       {"", " ", "text", "<a>", "<a>text", "</a>", "<a></b>", "<a><b></a></b>", "<a", "<>",
        "<a/><b/>", "<a/>text", "<a>&unknown;</a>", "<a>&amp</a>", "<a>&#0;</a>", "<a>&#200;</a>",
        "<a>&#;</a>", "<a>&;</a>", "<a>&#x;</a>"})
    EXPECT_FALSE(parse(document).first) << document;
}

TEST(FlatXmlParser, IsReadyForAnotherDocumentAfterABrokenOne) {
  std::string events;
  XmlParser parser(&events, started, ended, read);
  EXPECT_FALSE(parser.parseMessage("<a><b>x", 7));
  events.clear();
  EXPECT_TRUE(parser.parseMessage("<c>y</c>", 8));
  EXPECT_EQ(events, "<c>[y]</c>");
}

TEST(FlatXmlParser, ReadsOnlyTheGivenBytes) {
  std::string events;
  XmlParser parser(&events, started, ended, read);
  EXPECT_TRUE(parser.parseMessage("<a/><b/>", 4));
  EXPECT_EQ(events, "<a></a>");
  EXPECT_FALSE(parser.parseMessage(nullptr, 0));
  EXPECT_FALSE(parser.parseMessage("<a/>", -1));
}

}  // namespace
