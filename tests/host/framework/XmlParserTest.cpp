#include "XmlParser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

// Counts the callbacks.
struct Notes {
  int calls = 0;
  bool throwing = false;

  static Notes& of(void* userData) { return *static_cast<Notes*>(userData); }
  static void start(void* userData, const char* /*name*/, const char** /*attributes*/) {
    ++of(userData).calls;
  }
  static void end(void* userData, const char* /*name*/) { ++of(userData).calls; }
  static void characters(void* userData, const char* /*text*/, int /*length*/) {
    ++of(userData).calls;
    if (of(userData).throwing) throw std::runtime_error("on purpose");
  }
};

class Parser : public testing::Test {
 protected:
  bool parse(const std::string& document) {
    return m_parser.parseMessage(document.data(), static_cast<int>(document.size()));
  }

  Notes m_notes;
  XmlParser m_parser{&m_notes, &Notes::start, &Notes::end, &Notes::characters};
};

TEST_F(Parser, RefusesAMissingDocument) {
  EXPECT_FALSE(m_parser.parseMessage(nullptr, 5));
  EXPECT_FALSE(m_parser.parseMessage("<a/>", -1));
}

TEST_F(Parser, RefusesDeclarationsOfEntities) {
  EXPECT_FALSE(parse("<!DOCTYPE a><a/>"));
  EXPECT_EQ(m_notes.calls, 0);
  EXPECT_FALSE(parse("<!DOCTYPE a [<!ENTITY x \"xx\"><!ENTITY y \"&x;&x;\">]><a>&y;</a>"));
  EXPECT_FALSE(parse("<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><a>&x;</a>"));
  EXPECT_EQ(m_notes.calls, 0);
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

}  // namespace
