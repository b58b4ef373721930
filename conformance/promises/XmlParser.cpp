#include "XmlParser.h"

#include <string>
#include <utility>

#include "Promise.h"

namespace {

// Records the callbacks as text: <name key=value> "text" </name>.
struct ParserNotes {
  std::string text;

  static ParserNotes& of(void* userData) { return *static_cast<ParserNotes*>(userData); }
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
    of(userData).text += "\"" + std::string(text, static_cast<std::size_t>(length)) + "\"";
  }
};

class XmlParserPromise : public conformance::Promise {
 protected:
  bool parse(const std::string& document) {
    m_notes.text.clear();
    return m_parser.parseMessage(document.data(), static_cast<int>(document.size()));
  }
  std::string notesOf(const std::string& document) {
    EXPECT_TRUE(parse(document));
    return m_notes.text;
  }

  ParserNotes m_notes;
  XmlParser m_parser{&m_notes, &ParserNotes::start, &ParserNotes::end, &ParserNotes::characters};
};

TEST_F(XmlParserPromise, ReportsElementsInOrder) {
  promises("callbacks run inside parseMessage.");
  EXPECT_EQ(notesOf("<a><b></b><c/></a>"), "<a><b></b><c></c></a>");
}

TEST_F(XmlParserPromise, PassesItsUserData) {
  promises("`userData` is passed to every callback unchanged and is not owned.");
  ParserNotes notes;
  XmlParser other(&notes, &ParserNotes::start, &ParserNotes::end, &ParserNotes::characters);
  EXPECT_TRUE(parse("<a>1</a>"));
  EXPECT_TRUE(other.parseMessage("<b>2</b>", 8));
  EXPECT_EQ(m_notes.text, "<a>\"1\"</a>");
  EXPECT_EQ(notes.text, "<b>\"2\"</b>");
}

TEST_F(XmlParserPromise, ReportsAttributes) {
  promises("attributes: name, value, name, value, ... null.");
  EXPECT_EQ(notesOf("<a k='v' l=\"w\"/>"), "<a k=v l=w></a>");
}

TEST_F(XmlParserPromise, ReportsTextInOnePiece) {
  promises("The character-data callback gets the text of an element in one piece");
  EXPECT_EQ(notesOf("<a>&lt;x&gt; &amp; y\nz&#13;&#x41;caf\xC3\xA9</a>"),
            "<a>\"<x> & y\nz\rAcaf\xC3\xA9\"</a>");
  const std::string text(300'000, 'x');
  EXPECT_EQ(notesOf("<a>" + text + "</a>"), "<a>\"" + text + "\"</a>");
}

TEST_F(XmlParserPromise, ReportsCdataAndTextAroundOtherMarkup) {
  promises("The character-data callback gets the text of an element in one piece");
  EXPECT_EQ(notesOf("<a>x<![CDATA[<&>]]>y</a>"), "<a>\"x<&>y\"</a>");
  EXPECT_EQ(notesOf("<a>1<b>2</b>3<!-- no --><?no text?>4</a>"), "<a><b>\"2\"</b>\"134\"</a>");
}

TEST_F(XmlParserPromise, ReportsTextJustBeforeTheEnd) {
  promises("just before the end callback");
  EXPECT_EQ(notesOf("<a>1<b/></a>"), "<a><b></b>\"1\"</a>");
}

TEST_F(XmlParserPromise, ReportsNoEmptyText) {
  promises("and only if the text is not empty.");
  EXPECT_EQ(notesOf("<a></a>"), "<a></a>");
}

TEST_F(XmlParserPromise, ParsesAnotherDocument) {
  promises("May be called again with another document.");
  EXPECT_FALSE(parse("<a>"));
  EXPECT_TRUE(parse("<a>1</a>"));
  EXPECT_EQ(notesOf("<b>2</b>"), "<b>\"2\"</b>");
}

TEST_F(XmlParserPromise, TheLengthCounts) {
  promises("Parses one whole document of `length` bytes.");
  EXPECT_TRUE(m_parser.parseMessage("<a/><b/>", 4));
  EXPECT_FALSE(m_parser.parseMessage("<a/>", 3));
  EXPECT_FALSE(m_parser.parseMessage("<a/>", 0));
}

TEST_F(XmlParserPromise, RefusesWhatIsNotWellFormed) {
  promises("False when it is not well formed");
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

TEST_F(XmlParserPromise, ReportsThePartBeforeTheError) {
  promises("the part before the error has then reached the callbacks.");
  EXPECT_FALSE(parse("<a><b>1</b><c>2</a>"));
  EXPECT_EQ(m_notes.text, "<a><b>\"1\"</b><c>");
}

}  // namespace
