// Each expectation, once met and once almost met: an expectation that passes wrongly makes a
// scenario that cannot fail.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "runtime/Plugin.h"
#include "scenario/EventExpectation.h"
#include "scenario/ScenarioParser.h"
#include "scenario/ScenarioRunner.h"

namespace host {
namespace {

// What a scenario reports when it fails: place, what was expected, time and events; else "passed".
std::string reportOf(const std::string& text) {
  static Plugin plugin{CLOCK_PLUGIN};
  std::istringstream stream(text);
  const std::string failure = runScenario(plugin, readScenario(stream), "s");
  return failure.empty() ? "passed" : failure.substr(2);
}

// Its first line.
std::string resultOf(const std::string& text) {
  const std::string report = reportOf(text);
  return report.substr(0, report.find('\n') + 1) + (report == "passed" ? report : "");
}

struct Case {
  const char* steps;
  const char* met;
  const char* almostMet;  // differs as little as possible
};

// The telephone has 00:00 and date format 0 at the start, and announces each full hour.
const Case kCases[] = {
    {"", "expect get date-format 0", "expect get date-format 00"},
    {"set daylight-save-minutes 30\n", "expect get daylight-save-minutes 30",
     "expect get daylight-save-minutes 3"},
    {"set daylight-save-minutes 30\n", "expect get daylight-save-minutes 30",
     "expect get daylight-save-minutes 300"},
    {"set daylight-save-minutes 30\n", "expect get daylight-save-minutes 30",
     "expect get daylight-save-minutes 31"},
    {"", "expect call getTime getTimeStringReturn=00:00",
     "expect call getTime getTimeStringReturn=00:0"},
    {"", "expect call getTime getTimeStringReturn=00:00",
     "expect call getTime getTimeStringReturn=00:000"},
    {"clock advance 12h\n",
     "expect event timeChangeEvent timeChangeEventHours=12 timeChangeEventMinutes=0",
     "expect event timeChangeEvent timeChangeEventHours=12 timeChangeEventMinutes=1"},
    {"clock advance 10h\n", "expect event timeChangeEvent timeChangeEventHours=10",
     "expect event timeChangeEvent timeChangeEventHours=11"},
    {"clock advance 2h\n", "expect next event timeChangeEvent timeChangeEventHours=1",
     "expect next event timeChangeEvent timeChangeEventHours=2"},
    {"clock advance 1h\n", "expect no event timeChangeEvent timeChangeEventHours=2",
     "expect no event timeChangeEvent timeChangeEventHours=1"},
    {"clock advance 1h\n", "expect no event dateChangeEvent", "expect no event timeChangeEvent"},
    {"", "expect no event", "expect next event timeChangeEvent"},
    // an event that comes just in time, one that comes a second later, and one that has come
    {"", "wait event timeChangeEvent timeChangeEventHours=2 within 2h",
     "wait event timeChangeEvent timeChangeEventHours=2 within 1h59m59s"},
    {"clock advance 1h\n", "wait event timeChangeEvent within 0s",
     "wait event timeChangeEvent timeChangeEventHours=2 within 0s"},
    {"wait event timeChangeEvent timeChangeEventHours=2 within 1d\n",
     "expect call getTime getTimeStringReturn=02:00", "expect event timeChangeEvent"},
    // what was found and what came before it is skipped, and no more
    {"clock advance 3h\nexpect event timeChangeEvent timeChangeEventHours=2\n",
     "expect next event timeChangeEvent timeChangeEventHours=3",
     "expect event timeChangeEvent timeChangeEventHours=1"},
    {"clock advance 3h\nexpect event timeChangeEvent timeChangeEventHours=2\n",
     "expect event timeChangeEvent timeChangeEventHours=3",
     "expect event timeChangeEvent timeChangeEventHours=2"},
    {"clock advance 2h\nexpect next event timeChangeEvent timeChangeEventHours=1\n",
     "expect next event timeChangeEvent timeChangeEventHours=2",
     "expect next event timeChangeEvent timeChangeEventHours=1"},
    {"clock advance 1h\nexpect next event timeChangeEvent\n", "expect no event",
     "expect next event timeChangeEvent"},
    {"set daylight-save-zone-index 3\n", "expect report daylight-save-zone-id 3",
     "expect report daylight-save-zone-id 30"},
    {"set daylight-save-zone-index 3\nexpect report daylight-save-zone-id 3\n", "expect no report",
     "expect report daylight-save-zone-id 3"},
    {"set daylight-save-zone-index 12\n", "expect report daylight-save-zone-id 12",
     "expect report daylight-save-zone-id 1"},
    {"", "expect state time 0", "expect state time 1"},
    {"inject value mac-addr 001122334455\n", "expect value mac-addr 001122334455",
     "expect value mac-addr 00112233445"},
    {"", "expect tz LOC00:00", "expect tz LOC00:0"},
    {"", "expect file setupTZ.sh \"#!/bin/sh\\n\\nexport TZ=LOC00:00\\n\\n\"",
     "expect file setupTZ.sh \"#!/bin/sh\\n\\nexport TZ=LOC00:00\\n\""},
    {"", "expect no file /data/none", "expect no file setupTZ.sh"},
    {"", "expect refused set daylight-save yes", "expect refused set daylight-save true"},
    {"", "expect refused call getTimeUTCStr", "expect refused call getTime"},
    {"", "expect false call setDate setDateDay=1 setDateMonth=1 setDateYear=2040",
     "expect false call setDate setDateDay=1 setDateMonth=1 setDateYear=2030"},
    {"", "expect false call setTime setTimeHours=9",
     "expect false call setTime setTimeHours=9 setTimeMinutes=0 setTimeSeconds=0"},
    {"", "expect call setDate setDateDay=1 setDateMonth=1 setDateYear=2040 setDateReturn=false",
     "expect call setDate setDateDay=1 setDateMonth=1 setDateYear=2040"},
    {"", "call setDate setDateDay=1 setDateMonth=1 setDateYear=2030",
     "call setDate setDateDay=1 setDateMonth=1 setDateYear=2040"},
    {"", "expect call isTimeSourceSntp isTimeSourceSntpReturn=false", "call isTimeSourceSntp"},
};

TEST(ScenarioExpectations, HoldOnlyForWhatCame) {
  for (const Case& each : kCases) {
    const std::string steps = each.steps;
    EXPECT_EQ(resultOf(steps + each.met), "passed") << steps << each.met;
    const auto line = std::to_string(std::count(steps.begin(), steps.end(), '\n') + 1);
    const std::string result = resultOf(steps + each.almostMet);
    EXPECT_EQ(result.rfind(line + ": expected ", 0), 0U)
        << steps << each.almostMet << ": " << result;
  }
}

TEST(ScenarioExpectations, TheFailureShowsTheWholeExpectation) {
  EXPECT_EQ(
      resultOf("expect event timeChangeEvent timeChangeEventHours=1 timeChangeEventMinutes=2"),
      "1: expected event timeChangeEvent timeChangeEventHours=1 timeChangeEventMinutes=2, "
      "got none\n");
}

TEST(ScenarioExpectations, AFailureShowsWhatCameInstead) {
  const std::pair<const char*, const char*> failing[] = {
      {"expect call getTime getTimeStringReturn=12:00",
       "1: expected a reply with getTimeStringReturn=12:00, got getTimeStringReturn=00:00\n"},
      {"\nexpect get date-format 2", "2: expected date-format \"2\", got \"0\"\n"},
      {"wait event dateChangeEvent within 1h30m",
       "1: expected event dateChangeEvent within 01:30:00, got timeChangeEvent "
       "timeChangeEventHours=1 timeChangeEventMinutes=0 timeChangeEventSeconds=0\n"},
      {"expect event dateChangeEvent", "1: expected event dateChangeEvent, got none\n"},
      {"clock advance 1h\nexpect no event",
       "2: expected no event, got timeChangeEvent timeChangeEventHours=1 "
       "timeChangeEventMinutes=0 timeChangeEventSeconds=0\n"},
      {"variant 3\nset sntp-tz-offset -5\nclock advance 1s\n"
       "clock jump local 2026-03-08 01:59:50\nexpect call getTime getTimeStringReturn=x",
       "5: expected a reply with getTimeStringReturn=x, got getTimeStringReturn=01:59am\n"},
      {"set sntp-tz-offset -5\nclock jump local 2026-03-08 01:59:50",
       "2: expected success, got a refusal: the zone that was set is not applied yet; let time "
       "pass, as with `clock advance 1s`, then write the local time again\n"},
      {"set daylight-save-zone-id 12\nset time local 2026-03-08 01:59:50",
       "2: expected success, got a refusal: the zone that was set is not applied yet; let time "
       "pass, as with `clock advance 1s`, then write the local time again\n"},
      {"variant 3\nset sntp-tz-offset -5\nclock advance 1s\nclock jump local 2026-03-08 02:00:00",
       "4: expected success, got a refusal: local time 2026-03-08 02:00:00 is skipped by daylight "
       "saving; write a time outside it\n"},
      {"variant 3\nset sntp-tz-offset -5\nclock advance 1s\nclock jump local 2026-11-01 01:30:00",
       "4: expected success, got a refusal: local time 2026-11-01 01:30:00 comes twice; write "
       "2026-11-01T05:30:00Z or 2026-11-01T06:30:00Z\n"},
      {"set sntp-tz-offset 1\nclock advance 1s\nclock jump local 1970-01-01 00:59:59",
       "3: expected success, got a refusal: local time 1970-01-01 00:59:59 is before 1970-01-01 "
       "UTC; write a later one\n"},
      {"set sntp-tz-offset -5\nclock advance 1s\nclock jump local 2199-12-31 19:00:00",
       "3: expected success, got a refusal: local time 2199-12-31 19:00:00 is after the year 2199 "
       "UTC; write an earlier one\n"},
      {"expect tz LOC-1:00", "1: expected TZ \"LOC-1:00\", got \"LOC00:00\"\n"},
      {"expect no file setupTZ.sh", "1: expected no file setupTZ.sh, got one\n"},
      {"expect file setupTZ.sh x",
       "1: expected a file setupTZ.sh with \"x\", got \"#!/bin/sh\\n\\nexport "
       "TZ=LOC00:00\\n\\n\"\n"},
      {"expect file /data/x x", "1: expected a file /data/x, got none\n"},
      {"expect state time 4", "1: expected the item state of time \"4\", got \"0\"\n"},
      {"expect report date-format 2", "1: expected a report of date-format 2, got none\n"},
      {"set daylight-save-zone-index 3\nexpect no report",
       "2: expected no report, got daylight-save-zone-id 3\n"},
      {"expect refused set date-format 1", "1: expected a refusal, got success\n"},
      {"expect refused call getTime", "1: expected no reply, got getTimeStringReturn=00:00\n"},
      {"set daylight-save yes",
       "1: expected success, got a refusal: \"daylight-save\" refused \"yes\"; it "
       "takes true or false\n"},
      {"call setDate setDateDay=1 setDateMonth=1 setDateYear=2040",
       "1: expected success, got setDateReturn=false; write `expect false call` if that is "
       "right\n"},
      {"expect refused call setDate setDateDay=1 setDateMonth=1 setDateYear=2040",
       "1: expected no reply, got setDateReturn=false; write `expect false call`\n"},
      {"expect false call setTime setTimeHours=1 setTimeMinutes=0 setTimeSeconds=0",
       "1: expected a reply of false, got setTimeReturn=true\n"},
      {"expect value mac-addr 1", "1: expected mac-addr \"1\", got no such value\n"},
  };
  for (const auto& [text, error] : failing) EXPECT_EQ(resultOf(text), error) << text;
}

TEST(ScenarioExpectations, TheFailureListsTheLastFiveThatCame) {
  EXPECT_EQ(listed({}), "none");
  EXPECT_EQ(listed({"a"}), "a");
  EXPECT_EQ(listed({"a", "b", "c", "d", "e"}), "a; b; c; d; e");
  EXPECT_EQ(listed({"a", "b", "c", "d", "e", "f"}), "... b; c; d; e; f");
}

TEST(ScenarioExpectations, TheFailureTellsTimeAndTheLastTenEvents) {
  EXPECT_EQ(reportOf("set sntp-tz-offset 1\nclock advance 1s\nclock advance 2h\nexpect tz x"),
            "4: expected TZ \"x\", got \"LOC-1:00\"\n"
            "  time: 2016-06-16T02:00:01Z, local 2016-06-16 03:00:01 (LOC, UTC+01:00)\n"
            "  last events:\n"
            "    2016-06-16T00:00:00Z timezoneChangeEvent timezoneChangeEventTimezone=LOC-1:00\n"
            "    2016-06-16T00:00:00Z timeChangeEvent timeChangeEventHours=1 "
            "timeChangeEventMinutes=0 timeChangeEventSeconds=0\n"
            "    2016-06-16T00:00:00Z dateChangeEvent dateChangeEventDay=16 "
            "dateChangeEventMonth=6 dateChangeEventYear=2016\n"
            "    2016-06-16T01:00:00Z timeChangeEvent timeChangeEventHours=2 "
            "timeChangeEventMinutes=0 timeChangeEventSeconds=0\n"
            "    2016-06-16T02:00:00Z timeChangeEvent timeChangeEventHours=3 "
            "timeChangeEventMinutes=0 timeChangeEventSeconds=0\n");
  const std::string report =
      reportOf("clock advance 12h\nexpect event timeChangeEvent\nexpect tz x");
  EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 13) << report;
  EXPECT_EQ(report.find("T02:00:00Z time"), std::string::npos) << report;
  EXPECT_NE(report.find("T03:00:00Z time"), std::string::npos) << report;
  EXPECT_NE(report.find("T12:00:00Z time"), std::string::npos) << report;
}

// A line is found once; it and those before it are then skipped.
TEST(ScenarioExpectations, FindEachLogLineOnce) {
  const std::string steps =
      "expect false call setDate setDateDay=1 setDateMonth=1 setDateYear=2038\n"
      "expect false call setDate setDateDay=1 setDateMonth=1 setDateYear=2099\n";
  EXPECT_EQ(resultOf(steps + "expect log restriction: 2038\nexpect log restriction: 2099"),
            "passed");
  for (const char* const wrong : {"expect log restriction: 2038\nexpect log restriction: 2038",
                                  "expect log restriction: 2099\nexpect log restriction: 2038",
                                  "expect log restriction: 2099\nexpect log restriction: 2099",
                                  "expect no event\nexpect log restriction: 2037"}) {
    EXPECT_EQ(resultOf(steps + wrong).rfind("4: expected a log line with ", 0), 0U) << wrong;
  }
}

}  // namespace
}  // namespace host
