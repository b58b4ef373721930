#include "XmlParser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "DataStorage.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "services/MemoryDataAccess.h"

namespace {

// Records the callbacks as text: <name key=value> "text" </name>.
struct Notes {
  std::string text;
  bool throwing = false;

  static Notes& of(void* userData) { return *static_cast<Notes*>(userData); }
  static void start(void* userData, const char* name, const char** attributes) {
    std::string& text = of(userData).text;
    text += std::string("<") + name;
    for (; *attributes != nullptr; attributes += 2) {
      text += std::string(" ") + attributes[0] + "=" + attributes[1];
    }
    text += ">";
  }
  static void end(void* userData, const char* name) {
    of(userData).text += std::string("</") + name + ">";
  }
  static void characters(void* userData, const char* text, int length) {
    if (of(userData).throwing) throw std::runtime_error("on purpose");
    of(userData).text += "\"" + std::string(text, static_cast<std::size_t>(length)) + "\"";
  }
};

class Parser : public testing::Test {
 protected:
  bool parse(const std::string& document) {
    m_notes.text.clear();
    return m_parser.parseMessage(document.data(), static_cast<int>(document.size()));
  }

  Notes m_notes;
  XmlParser m_parser{&m_notes, &Notes::start, &Notes::end, &Notes::characters};
};

TEST_F(Parser, ReportsElementsAndEachTextInOnePieceBeforeTheEnd) {
  const std::pair<const char*, const char*> rows[] = {
      {"<a><b>one</b><c k='v' l=\"w\">two</c></a>", "<a><b>\"one\"</b><c k=v l=w>\"two\"</c></a>"},
      {"<a><b></b><c/></a>", "<a><b></b><c></c></a>"},
      {"<a>&lt;x&gt; &amp; y\nz&#13;&#x41;<![CDATA[<&>]]>caf\xC3\xA9</a>",
       "<a>\"<x> & y\nz\rA<&>caf\xC3\xA9\"</a>"},
      {"<a>1<b>2</b>3<!-- no --><?no text?>4</a>", "<a><b>\"2\"</b>\"134\"</a>"},
  };
  for (const auto& [document, events] : rows) {
    EXPECT_TRUE(parse(document)) << document;
    EXPECT_EQ(m_notes.text, events);
  }
}

TEST_F(Parser, ReportsALongTextInOnePiece) {
  const std::string text(300'000, 'x');
  EXPECT_TRUE(parse("<a>" + text + "</a>"));
  EXPECT_EQ(m_notes.text, "<a>\"" + text + "\"</a>");
}

TEST_F(Parser, ParsesAnotherDocument) {
  EXPECT_FALSE(parse("<a>"));
  EXPECT_TRUE(parse("<a>1</a>"));
  EXPECT_TRUE(parse("<b>2</b>"));
  EXPECT_EQ(m_notes.text, "<b>\"2\"</b>");
}

TEST_F(Parser, RefusesWhatIsNotWellFormed) {
  for (const std::string& document :
       {std::string(), std::string(" "), std::string("text"), std::string("<a>"),
        std::string("</a>"), std::string("<a></b>"), std::string("<a/><b/>"),
        std::string("<a>&</a>"), std::string("<a>&unknown;</a>"), std::string("<a x></a>"),
        std::string("<a x='1' x='2'/>"), std::string("<a>\x01</a>"), std::string("<a>\xFF</a>"),
        std::string("<a>\0</a>", 8), std::string("<a>&#0;</a>"), std::string("<a>]]></a>"),
        std::string("<a/>x"), std::string("<?xml version=\"1.0\" encoding=\"none\"?><a/>")}) {
    EXPECT_FALSE(parse(document)) << document;
  }
}

TEST_F(Parser, ReportsThePartBeforeTheError) {
  EXPECT_FALSE(parse("<a><b>1</b><c>2</a>"));
  EXPECT_EQ(m_notes.text, "<a><b>\"1\"</b><c>");
}

TEST_F(Parser, RefusesAMissingDocument) {
  EXPECT_FALSE(m_parser.parseMessage(nullptr, 5));
  EXPECT_FALSE(m_parser.parseMessage("<a/>", -1));
  EXPECT_FALSE(m_parser.parseMessage("<a/>", 0));
  EXPECT_FALSE(m_parser.parseMessage("<a/>", 3)) << "the length counts, not a terminator";
}

TEST_F(Parser, RefusesDeclarationsOfEntities) {
  EXPECT_FALSE(parse("<!DOCTYPE a><a/>"));
  EXPECT_EQ(m_notes.text, "");
  EXPECT_FALSE(parse("<!DOCTYPE a [<!ENTITY x \"xx\"><!ENTITY y \"&x;&x;\">]><a>&y;</a>"));
  EXPECT_FALSE(parse("<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><a>&x;</a>"));
  EXPECT_EQ(m_notes.text, "");
}

TEST_F(Parser, ParsesDeeplyNestedElements) {
  constexpr int kDepth = 20'000;
  std::string document;
  for (int i = 0; i < kDepth; ++i) document += "<a>";
  document += "x";
  for (int i = 0; i < kDepth; ++i) document += "</a>";
  EXPECT_TRUE(parse(document));
}

TEST_F(Parser, PassesOnACallbacksException) {
  m_notes.throwing = true;
  EXPECT_THROW(static_cast<void>(parse("<a>1</a>")), std::runtime_error);
  m_notes.throwing = false;
  EXPECT_TRUE(parse("<a>1</a>"));
}

TEST(XmlParser, WorksWithoutCallbacks) {
  XmlParser parser(nullptr, nullptr, nullptr, nullptr);
  EXPECT_TRUE(parser.parseMessage("<a>1</a>", 8));
}

const std::string kValues[] = {
    // white space
    " a b ", "\r", "\n", "\r\n", "\t",
    // markup
    "&", "<", ">", "]]>", "<![CDATA[x]]>", "&amp;", "&#13;", "</Key>", "\"'",
    // other characters
    "plain", "\x7F", "caf\xC3\xA9", "\xC2\x85", "\xE2\x80\xA8", "\xEE\x80\x80", "\xEF\xBF\xBD",
    "\xF4\x8F\xBF\xBF"};

TEST(XmlParser, RestoresEveryValueThatTheSettingsAccept) {
  host::VirtualClock clock;
  host::HostContext context(clock);
  host::MemoryDataAccess access;
  context.add("DataAccessServiceIfc", &access);
  DataStorage storage(context, "Schema");
  ASSERT_TRUE(storage.findDataAccessService());
  for (const std::string& value : kValues) {
    ASSERT_TRUE(storage.setDataItem("Key", value)) << value;
    ASSERT_TRUE(storage.setDataItem("Other", "2"));
    Notes notes;
    XmlParser parser(&notes, &Notes::start, &Notes::end, &Notes::characters);
    const std::string document = storage.getDataItems("Key Other");
    EXPECT_TRUE(parser.parseMessage(document.data(), static_cast<int>(document.size())))
        << document;
    EXPECT_EQ(notes.text, "<Settings><Key>\"" + value + "\"</Key><Other>\"2\"</Other></Settings>");
  }
}

}  // namespace
