#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "scenario/ScenarioParser.h"
#include "scenario/ScenarioWords.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

using Words = std::vector<std::string>;

Scenario parsed(const std::string& text) {
  std::istringstream stream(text);
  return readScenario(stream);
}

std::string faultOf(const std::string& text) {
  try {
    return "accepted, steps: " + std::to_string(parsed(text).steps.size());
  } catch (const ScenarioTextError& error) {
    return error.what();
  }
}

TEST(ScenarioWords, RefuseABadEscapeInOneLine) {
  EXPECT_THAT(faultOf("set \"\\q\""),
              testing::HasSubstr(R"("\q" is not an escape; write \", \\ or \n)"));
  EXPECT_THAT(faultOf("set \"\\\x16\""), testing::HasSubstr(R"("\\x16" is not an escape)"));
  EXPECT_THAT(faultOf("set \"\\\xFF\""), testing::HasSubstr(R"("\\xFF" is not an escape)"));
}

TEST(ScenarioWords, BlanksQuotesEscapesAndComments) {
  const std::pair<const char*, Words> accepted[] = {
      {"", {}},
      {" \t\r", {}},
      {"# all of it", {}},
      {"a b", {"a", "b"}},
      {"  a\tb  ", {"a", "b"}},
      {"a b # rest", {"a", "b"}},
      {"a#b", {"a#b"}},
      {"\"a b\" c", {"a b", "c"}},
      {"\"\"", {""}},
      {"a=\"b c\"d", {"a=b cd"}},
      {"\"a\\\"b\\\\c\\nd\"", {"a\"b\\c\nd"}},
      {"\"# no comment\"", {"# no comment"}},
      {"a\\b", {"a\\b"}},
  };
  for (const auto& [line, words] : accepted) EXPECT_EQ(splitScenarioLine(line), words) << line;
  for (const char* const line : {"\"", "\"a", "a\"", "\"\\", "\"\\\"", "\"\\x\""}) {
    EXPECT_THROW(static_cast<void>(splitScenarioLine(line)), UsageError) << line;
  }
}

TEST(ScenarioParser, SetupLines) {
  const Scenario scenario = parsed(
      "# a comment\n"
      "\n"
      "variant 3\n"
      "software-type \"Velmora QEX\"\n"
      "mac 0001E3a1b2c3\n"
      "network up\n"
      "at 2026-03-08T01:59:50-05:00\n");
  EXPECT_EQ(scenario.device.variant, 3);
  EXPECT_EQ(scenario.device.softwareType, "Velmora QEX");
  EXPECT_EQ(scenario.device.mac, "0001E3a1b2c3");
  EXPECT_TRUE(scenario.device.networkUp);
  EXPECT_EQ(scenario.device.at, "2026-03-08T06:59:50+00:00");
  EXPECT_TRUE(scenario.steps.empty());
}

TEST(ScenarioParser, SkipsAByteOrderMark) {
  EXPECT_EQ(parsed("\xEF\xBB\xBFvariant 3\n").device.variant, 3);
  EXPECT_THAT(faultOf("\n\xEF\xBB\xBFvariant 3"), testing::HasSubstr("2: unknown step"));
}

TEST(ScenarioParser, StepsKeepTheirLineNumbers) {
  const Scenario scenario = parsed("variant 3\n\n# two\nget time\n\nrestart\n");
  ASSERT_EQ(scenario.steps.size(), 2U);
  EXPECT_EQ(scenario.steps[0].line, 4);
  EXPECT_EQ(scenario.steps[1].line, 6);
}

// Most expectations are in ScenarioExpectationsTest.cpp.
TEST(ScenarioParser, EachKindOfStep) {
  for (const char* const line :
       {"call getTime",
        "call setTimeInt setTime=5",
        "set sntp-tz-offset -5",
        "set time local 2026-03-08 01:59:50",
        "expect refused set time tomorrow",
        "get time",
        "reset",
        "keys",
        "clock advance 10s",
        "clock to dst",
        "inject jack 5 1",
        "status",
        "log",
        "security-log",
        "restart",
        "power-cut",
        "file /data/fallback_time.txt text",
        "file /tmp/votk/x \"\"",
        "store DateFormat 2",
        "expect call getTime",
        "expect call setTime setTimeHours=1 setTimeMinutes=2 setTimeSeconds=3 setTimeReturn=true",
        "expect get simple-date \"\"",
        "expect event timeChangeEvent",
        "expect next event dateChangeEvent dateChangeEventDay=1",
        "expect no event dateChangeEvent",
        "expect false call setTime setTimeHours=24",
        "wait event timeChangeEvent timeChangeEventHours=1 within 1h30m",
        "expect refused set daylight-save-zone-text x",
        "expect refused call getTimeUTCStr",
        "inject value mac-addr 001122334455",
        "inject user-data date-format on",
        "expect file /data/x text",
        "expect no file /data/x",
        "expect log several words"}) {
    EXPECT_EQ(faultOf(line), "accepted, steps: 1") << line;
  }
}

// Wrong lines are in bad-inputs.txt.
TEST(ScenarioParser, AWrongLineIsNamedByItsNumber) {
  EXPECT_EQ(faultOf("include x"), "1: there is no file to include (usage: include FILE)");
  EXPECT_THAT(faultOf("get time\nvariant 3"),
              testing::StartsWith("2: \"variant\" configures the device before power-on"));
  EXPECT_THAT(faultOf("\n\nclock advance 3 parsecs"),
              testing::StartsWith("3: clock advance: \"3 parsecs\" is not a duration"));
}

}  // namespace
}  // namespace host
