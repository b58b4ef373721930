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

TEST(ScenarioParser, AMissingWordIsNamedWithTheUsage) {
  const std::pair<const char*, const char*> rows[] = {
      {"expect no", "\"no\" cannot be expected"},
      {"expect next", "\"next\" cannot be expected"},
      {"expect call", "METHOD is missing (usage: call METHOD [NAME=VALUE ...])"},
      {"expect false call", "METHOD is missing (usage: false call METHOD [NAME=VALUE ...])"},
      {"expect refused call", "METHOD is missing (usage: call METHOD [NAME=VALUE ...])"},
      {"call", "METHOD is missing (usage: call METHOD [NAME=VALUE ...])"},
      {"expect get", "KEY is missing (usage: get KEY VALUE)"},
      {"expect get time", "VALUE is missing (usage: get KEY VALUE)"},
      {"expect event", "NAME is missing (usage: event NAME [NAME=VALUE ...])"},
      {"expect next event", "NAME is missing (usage: next event NAME [NAME=VALUE ...])"},
      {"expect file", "DEVICEPATH is missing (usage: file DEVICEPATH TEXT)"},
      {"expect file /data/x", "TEXT is missing (usage: file DEVICEPATH TEXT)"},
      {"expect no file", "DEVICEPATH is missing (usage: no file DEVICEPATH)"},
      {"expect log \"\"", "TEXT is missing (usage: log TEXT)"},
      {"expect tz", "TEXT is missing (usage: tz TEXT)"},
      {"expect report", "KEY is missing (usage: report KEY VALUE)"},
      {"expect report time", "VALUE is missing (usage: report KEY VALUE)"},
      {"expect no report x", "\"x\" is one word too many (usage: no report)"},
      {"expect state", "KEY is missing (usage: state KEY N)"},
      {"expect state time", "N is missing (usage: state KEY N)"},
      {"expect value", "KEY is missing (usage: value KEY TEXT)"},
      {"expect value mac-addr", "TEXT is missing (usage: value KEY TEXT)"},
      {"expect log", "TEXT is missing (usage: log TEXT)"},
  };
  for (const auto& [text, error] : rows) EXPECT_EQ(faultOf(text), std::string("1: ") + error);
}

TEST(ScenarioParser, WrongLinesAreNamedWithWhatWouldBeRight) {
  const std::pair<const char*, const char*> rejected[] = {
      {"varient 3", "1: unknown step \"varient\"; did you mean \"variant\"?"},
      {"variant three", "1: \"three\" is not a number; N is a decimal integer"},
      {"variant 3 4", "1: \"4\" is one word too many"},
      {"mac 0001E3A1B2C", "1: \"0001E3A1B2C\" is not a MAC address; write 12 hexadecimal digits"},
      {"mac 0001E3A1B2CG", "is not a MAC address"},
      {"network maybe", "\"maybe\" is not up or down"},
      {"at noon", "1: \"noon\" is not an instant; write `2026-03-08T06:59:50Z`"},
      {"get time\nvariant 3", "2: \"variant\" configures the device before power-on"},
      {"\n\nclock advance 3 parsecs", "3: clock advance: \"3 parsecs\" is not a duration"},
      {"watch --count 1", "write `expect event`"},
      {"status --watch", "a scenario cannot watch, follow or record; write `expect event`"},
      {"upcoming --plot x.svg", "a scenario cannot draw a plot; leave out --plot"},
      {"log --follow", "write `expect event` or `expect log`"},
      {"restart now", "\"now\" is one word too many"},
      {"power-cut now", "\"now\" is one word too many"},
      {"file /data/x text y", "\"y\" is one word too many"},
      {"store DateFormat 2 x", "\"x\" is one word too many"},
      {"file /etc/passwd x",
       "\"/etc/passwd\" is not a file of the device; write a path below /data/"},
      {"file /data/../etc/passwd x", "is not a file of the device"},
      {"file /data/x", "TEXT is missing"},
      {"expect", "the expectation is missing"},
      {"expect evnt timeChangeEvent", "\"evnt\" cannot be expected; did you mean \"event\"?"},
      {"expect no get x", "\"no get\" cannot be expected"},
      {"expect event timechange", "no event \"timechange\"; did you mean \"timeChangeEvent\"?"},
      {"expect event timeChangeEvent Hours=3", "\"Hours\" is not a parameter of timeChangeEvent"},
      {"expect event timeChangeEvent 3", "\"3\" is not an argument"},
      {"expect call getTme", "no method \"getTme\"; did you mean \"getTime\"?"},
      {"expect call getTime getTimeReturn=1", "did you mean \"getTimeStringReturn\"?"},
      {"wait", "only an event can be waited for (usage: wait event NAME"},
      {"wait 5s", "only an event can be waited for"},
      {"wait event", "NAME is missing (usage: wait event NAME [NAME=VALUE ...] within DURATION)"},
      {"wait event timeChange within 1h", "no event \"timeChange\""},
      {"wait event timeChangeEvent Hours=1 within 1h", "\"Hours\" is not a parameter"},
      {"wait event timeChangeEvent", "within DURATION is missing"},
      {"wait event timeChangeEvent within", "DURATION is missing"},
      {"wait event timeChangeEvent within 1w", "wait: \"1w\" is not a duration"},
      {"expect event timeChangeEvent within 1h", "\"within\" is not an argument"},
      {"include x", "1: there is no file to include (usage: include FILE)"},
      {"inclde x", "did you mean \"include\"?"},
      {"call setTime hours=9", "\"hours\" is not a parameter of setTime"},
      {"call setTime setTimeHour=9", "did you mean \"setTimeHours\"?"},
      {"call setTime setTimeHours=9",
       "the parameter setTimeMinutes is missing (usage: setTime setTimeHours=INT "},
      {"call setTimeInt", "the parameter setTime is missing"},
      {"call setTimeInt setTime=noon", "setTime is an int, not \"noon\""},
      {"call getTimeUTCStr getTimeUTCStrString=5",
       "is a string; write getTimeUTCStrString:string=5"},
      {"call getTme", "no method \"getTme\"; did you mean \"getTime\"?"},
      {"call getTime getTimeStringReturn=x", "is in the reply; write `expect call` to check it"},
      {"expect call setTimeInt setTime=5", "setTimeInt never replies; write `call`"},
      {"expect refused call nothing", "no method \"nothing\""},
      {"expect refused call setTimeInt setTime=5", "setTimeInt never replies"},
      {"expect refused call getTime getTimeStringReturn=x", "write `expect call` to check it"},
      {"expect false call getTime", "getTime reports neither true nor false"},
      {"expect false call setDate setDateYaer=1", "did you mean \"setDateYear\"?"},
      {"expect refused set dalight-save true", "no key \"dalight-save\"; did you mean"},
      {"expect refused get tine", "no key \"tine\"; did you mean \"time\"?"},
      {"set dalight-save true", "no key \"dalight-save\"; did you mean \"daylight-save\"?"},
      {"set time tomorrow",
       "set time: \"tomorrow\" is not an instant; write `2026-03-08T06:59:50Z`"},
      {"get nope", "no key \"nope\"; there are time, simple-time, "},
      {"expect get nope 0", "no key \"nope\""},
      {"expect state nope 0", "no key \"nope\""},
      {"expect report nope 0", "no key \"nope\""},
      {"expect value mac-adr x", "no device value \"mac-adr\"; did you mean \"mac-addr\"?"},
      {"inject value sntp-addr x", "no device value \"sntp-addr\"; there are mobility-"},
      {"inject user-data nope on", "no key \"nope\""},
      {"store Nope x", "no storage key \"Nope\"; there are FallbackDateTime, "},
      {"store DateFromat x", "no storage key \"DateFromat\"; did you mean \"DateFormat\"?"},
      {"expect state time four", "\"four\" is not a number"},
      {"expect refused", "VERB is missing (usage: refused VERB ...)"},
      {"expect refused watch",
       "watch cannot be refused; name another verb, or write `expect no event`"},
      {"expect tz LOC-1:00 x", "\"x\" is one word too many"},
      {"set a \"b", "1: a quote is not closed"},
  };
  for (const auto& [text, part] : rejected) {
    const std::string error = faultOf(text);
    EXPECT_NE(error.find(part), std::string::npos) << text << " -> " << error;
  }
}

}  // namespace
}  // namespace host
