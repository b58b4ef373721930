#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "integration/RestartableHost.h"
#include "verbs/KeyCatalogue.h"

namespace integration {
namespace {

using nlohmann::json;

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

void expectRefused(const Outcome& outcome, int status, const std::string& part) {
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(contains(outcome.err, part)) << outcome.err;
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
}

TEST(ClockCtlCall, PrintsEachReplyParameter) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
  EXPECT_EQ(host.ctl({"call", "getDate"}).out, "getDateStringReturn=16.06.16\n");
  EXPECT_EQ(host.ctl({"call", "getUTCTimeTimeVal", "getUTCTimeTimeValTime=1"}).out,
            "getUTCTimeTimeValStringReturn=1970-01-01T00:00:01+00:00\n");
  EXPECT_EQ(host.ctl({"call", "getDateInts"}).out,
            "getDateIntsDayReturn=16\ngetDateIntsMonthReturn=6\ngetDateIntsYearReturn=2016\n");
  EXPECT_EQ(host.ctl({"--json", "call", "getTime"}).out,
            "{\"method\":\"getTime\",\"reply\":{\"getTimeStringReturn\":\"00:00\"}}\n");
}

TEST(ClockCtlCall, OneWayIsDoneWhenTheServiceHasHandledIt) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"call", "setTimeInt", "setTime=1000000000"}).status, 0);
  EXPECT_EQ(host.ctl({"call", "getTimeVal"}).out, "getTimeValReturn=1000000000\n");
}

TEST(ClockCtlCall, UnknownMethodIsSentAndThenSuggested) {
  RunningHost host;
  expectRefused(host.ctl({"--timeout", "0.2", "call", "getTme"}), 1, "did you mean \"getTime\"?");
  EXPECT_TRUE(contains(host.ctl({"log"}).out, "Invalid Message")) << host.ctl({"log"}).out;
}

TEST(ClockCtlCall, TypesOfArgumentsCanBeSaid) {
  RunningHost host;
  // As a text it is no year: the service misses the parameter and refuses.
  const Words date = {"call", "setDate", "setDateDay=1", "setDateMonth=1"};
  Words asText = date;
  asText.emplace_back("setDateYear:string=2026");
  EXPECT_EQ(host.ctl(asText).out, "setDateReturn=false\n");
  Words asNumber = date;
  asNumber.emplace_back("setDateYear:int=2026");
  EXPECT_EQ(host.ctl(asNumber).out, "setDateReturn=true\n");
}

TEST(ClockCtlManagement, ValuesAreReadWrittenAndReset) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "0\n");
  EXPECT_EQ(host.ctl({"set", "date-format", "1"}).status, 0);
  EXPECT_EQ(host.ctl({"get", "simple-date"}).out, "2016-06-16\n");
  EXPECT_EQ(host.ctl({"set", "sntp-tz-offset", "-5"}).status, 0);
  EXPECT_EQ(host.ctl({"get", "sntp-tz-offset"}).out, "-5\n");
  EXPECT_EQ(host.ctl({"reset"}).status, 0);
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "0\n");
  expectRefused(host.ctl({"reset"}), 1, "nothing was reset");
}

TEST(ClockCtlManagement, RefusalsSayWhatWouldBeRight) {
  RunningHost host;
  expectRefused(host.ctl({"get", "dat-format"}), 1, "did you mean \"date-format\"?");
  expectRefused(host.ctl({"set", "dat-format", "1"}), 1, "did you mean \"date-format\"?");
  expectRefused(host.ctl({"set", "daylight-save", "yes"}), 1, "true or false");
  expectRefused(host.ctl({"set", "daylight-save-zone-text", "x"}), 1, "cannot be set");
  expectRefused(host.ctl({"set", "daylight-save-zone-id", "15"}), 1, "0-14");
}

TEST(ClockCtlManagement, ATextTooShortIsRefusedAndTheHostLives) {
  RunningHost host;
  expectRefused(host.ctl({"set", "simple-time", "7"}), 1, "refused \"7\"");
  expectRefused(host.ctl({"set", "simple-date", "1.1"}), 1, "refused \"1.1\"");
  EXPECT_EQ(host.ctl({"get", "simple-time"}).out, "00:00\n");
}

TEST(ClockCtlManagement, KeysAreSixteenWithTheirStates) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"set", "sntp-addr", "192.0.2.1"}).status, 0);
  const json keys = json::parse(host.ctl({"keys", "--json"}).out).at("keys");
  ASSERT_EQ(keys.size(), 16U);
  EXPECT_EQ(keys[0], (json{{"key", "time"},
                           {"value", "2016-06-16T00:00:00+00:00"},
                           {"settable", true},
                           {"state", 4}}));
  EXPECT_EQ(keys[13].at("value"), "Not Set");
  EXPECT_EQ(keys[13].at("settable"), false);
}

TEST(ClockCtlManagement, EveryExampleOfTheTableIsTaken) {
  RunningHost running;
  for (const host::ManagementKey& row : host::managementKeys()) {
    const std::string key(row.key);
    EXPECT_EQ(running.ctl({"get", key}).status, 0) << key;
    const Outcome set = running.ctl({"set", key, std::string(row.example)});
    EXPECT_EQ(set.status, row.settable ? 0 : 1) << key << ": " << set.err;
  }
}

TEST(ClockCtlManagement, TheSecurityLogHoldsEachAttempt) {
  RunningHost host;
  // Set by a process that is known: clockctl in one, as the kernel sees it.
  const auto setBy = [&](const Words& words, int status) {
    const auto setter = host.startCtl(words);
    const std::string id = std::to_string(setter->id());
    EXPECT_EQ(setter->wait().status, status);
    return "uid " + std::to_string(::getuid()) + ", pid " + id;
  };
  const std::string first = setBy({"set", "date-format", "1"}, 0);
  const std::string second = setBy({"set", "daylight-save", "yes"}, 1);
  const std::string third = setBy({"call", "setTimeInt", "setTime=1466035200"}, 0);
  EXPECT_EQ(host.ctl({"security-log"}).out,
            "1 2016-06-16T00:00:00Z accepted " + first +
                ": ClockSettings set data date-format(1)\n"
                "2 2016-06-16T00:00:00Z refused  " +
                second +
                ": ClockSettings set data daylight-save(yes)\n"
                "3 2016-06-16T00:00:00Z accepted " +
                third +
                ": Remote call setTimeInt(1466035200)\n"
                "note         a loss of power may take the latest records, the end of the host "
                "does not\n");
  const json records = json::parse(host.ctl({"security-log", "--json"}).out).at("records");
  EXPECT_EQ(records[1].at("facility"), 4);
  EXPECT_EQ(records[1].at("severity"), 1);
  EXPECT_EQ(records[1].at("eventClass"), 5);
  EXPECT_EQ(records[1].at("eventCode"), 3);
  EXPECT_EQ(records[1].at("failure"), true);
}

TEST(ClockCtlClock, TheChangeOfDaylightSavingIsWatched) {
  RunningHost host({"--variant", "3"});
  EXPECT_EQ(host.ctl({"set", "sntp-tz-offset", "-5"}).status, 0);
  EXPECT_EQ(host.ctl({"clock", "jump", "2026-01-15T12:00:00Z"}).status, 0);
  const Outcome to = host.ctl({"clock", "to", "dst"});
  EXPECT_TRUE(contains(to.out, "2026-03-08T06:59:50Z")) << to.out << to.err;
  EXPECT_TRUE(contains(to.out, "paused 10 s before")) << to.out;
  const auto watch = host.startCtl({"watch", "--count", "1"});
  ASSERT_TRUE(host.waitFor({"status"}, "clients      2"));
  // The next to be asked is served after the watcher's registration, which came before.
  EXPECT_EQ(host.ctl({"clock", "advance", "10s"}).status, 0);
  EXPECT_EQ(watch->wait().out,
            "timeChangeEvent timeChangeEventHours=3 timeChangeEventMinutes=0 "
            "timeChangeEventSeconds=0\n");
  EXPECT_EQ(host.ctl({"call", "getTime"}).out, "getTimeStringReturn=03:00am\n");
}

TEST(ClockCtlClock, AJumpMovesTheTimeAndNotTheTimers) {
  RunningHost host;
  const json before = json::parse(host.ctl({"clock", "--json"}).out);
  const json after = json::parse(host.ctl({"--json", "clock", "jump", "2030-05-05T05:05:05Z"}).out);
  EXPECT_EQ(after.at("utc"), "2030-05-05T05:05:05Z");
  EXPECT_EQ(after.at("next"), before.at("next"));
  EXPECT_EQ(after.at("uptime"), before.at("uptime"));
  const json next = json::parse(host.ctl({"--json", "clock", "next"}).out);
  EXPECT_EQ(next.at("uptime"), "01:00:00");
}

TEST(ClockCtlClock, SpeedsChangeWhileItRuns) {
  RunningHost host;
  EXPECT_EQ(json::parse(host.ctl({"--json", "clock"}).out).at("speed"), "paused");
  EXPECT_EQ(host.ctl({"clock", "speed", "max"}).status, 0);
  ASSERT_TRUE(host.waitFor({"clock"}, "utc          2017-"));
  EXPECT_EQ(host.ctl({"clock", "pause"}).status, 0);
  const std::string paused = host.ctl({"clock"}).out;
  EXPECT_EQ(host.ctl({"clock"}).out, paused);
}

TEST(ClockCtlClock, WhatIsNoDurationIsUsage) {
  RunningHost host;
  expectRefused(host.ctl({"clock", "advance", "3", "parsecs"}), 2,
                "`90s`, `15m`, `2h`, `1d` or `00:30:00`");
  expectRefused(host.ctl({"clok"}), 2, "did you mean \"clock\"?");
  expectRefused(host.ctl({"clock", "to", "dst"}), 1,
                "no change to or from daylight saving was found in the 2 years after");
}

TEST(ClockCtlInject, TheDeviceTellsTheService) {
  RunningHost host({"--log-level", "5"});
  EXPECT_EQ(host.ctl({"inject", "jack", "5", "1"}).status, 0);
  EXPECT_EQ(host.ctl({"inject", "network", "up"}).status, 0);
  EXPECT_EQ(host.ctl({"inject", "value", "dhcp-enabled", "1"}).status, 0);
  const std::string log = host.ctl({"log"}).out;
  EXPECT_TRUE(contains(log, "jackEvent plugID 5 , plugStatus 1")) << log;
  EXPECT_TRUE(contains(log, "manageableDataChanged=\"interface-status\"")) << log;
  EXPECT_TRUE(contains(log, "manageableDataChanged=\"dhcp-enabled\"")) << log;
  EXPECT_TRUE(contains(host.ctl({"status"}).out, "network      up"));
}

TEST(ClockCtlLog, FollowsUntilTheHostEnds) {
  RunningHost host({"--log-level", "5"});
  const auto follower = host.startCtl({"log", "--follow"});
  ASSERT_TRUE(host.waitFor({"status"}, "clients      2"));
  EXPECT_EQ(host.ctl({"get", "date-format"}).status, 0);
  host.program().signal(SIGTERM);
  EXPECT_EQ(host.program().wait().status, 0);
  const Outcome followed = follower->wait();
  EXPECT_TRUE(contains(followed.out, "getData date-format")) << followed.out;
  EXPECT_EQ(followed.status, 1);
}

TEST(ClockCtl, NobodyAtTheSocketIsStatusThree) {
  RunningHost host;
  host.program().signal(SIGTERM);
  EXPECT_EQ(host.program().wait().status, 0);
  expectRefused(host.ctl({"status"}), 3, host.socket().string());
}

}  // namespace
}  // namespace integration
