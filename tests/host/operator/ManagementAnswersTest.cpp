// Answers to get, set, keys, log and security-log when keys and values are long or invalid UTF-8:
// readable, and short enough for a reply.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Logging.h"
#include "RecordingAgent.h"
#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "host/operator/RecordingChannel.h"
#include "operator/HostActions.h"
#include "remote/Frame.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"
#include "services/LocalManagement.h"
#include "services/MemoryDataAccess.h"
#include "services/SecurityLog.h"
#include "verbs/KeyCatalogue.h"

namespace host {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
constexpr std::size_t kLongestError = 1200;  // bytes: a few lines of a terminal

// A telephone with the built plug-in, powered on.
class ManagedTelephone : public ::testing::Test {
 protected:
  Json set(const std::string& key, const std::string& value) {
    return telephone.request({{"verb", "set"}, {"key", key}, {"value", value}});
  }
  Json get(const std::string& key) { return telephone.request({{"verb", "get"}, {"key", key}}); }

  // Lets the agent answer instead of the clock.
  void playTheClock() {
    ASSERT_TRUE(telephone.device().management().registerAgent("ClockMgmtId", &played));
  }

  conformance::RecordingAgent played;
  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
};

std::string errorIn(const Json& answer) {
  EXPECT_EQ(answer.at("ok"), false);
  std::string error = answer.value("error", std::string());
  EXPECT_LE(error.size(), kLongestError);
  EXPECT_EQ(escapedLine(error), error);
  return error;
}

TEST_F(ManagedTelephone, ClipsAnUnknownKey) {
  const std::string key(kMebibyte, 'k');
  const std::string error =
      "no key \"" + std::string(80, 'k') + "...\" (1048576 bytes); `clockctl keys` lists them";
  EXPECT_EQ(errorIn(get(key)), error);
  EXPECT_EQ(errorIn(set(key, "1")), error);
}

TEST_F(ManagedTelephone, ClipsARefusedValue) {
  EXPECT_EQ(errorIn(set("daylight-save", std::string(kMebibyte, 'v'))),
            "\"daylight-save\" refused \"" + std::string(80, 'v') +
                "...\" (1048576 bytes); it takes true or false");
}

TEST_F(ManagedTelephone, RefusesInOneLine) {
  EXPECT_EQ(errorIn(set("daylight-save", "y\ne\x1b[1ms")),
            "\"daylight-save\" refused \"y\\ne\\x1B[1ms\"; it takes true or false");
  EXPECT_EQ(errorIn(get("a\nb")), "no key \"a\\nb\"; `clockctl keys` lists them");
  EXPECT_EQ(errorIn(telephone.request({{"verb", "x\ny"}})), "unknown verb \"x\\ny\"");
  EXPECT_EQ(errorIn(telephone.request({{"verb", "inject"}, {"what", "r\n"}})),
            "\"r\\n\" cannot be injected");
}

TEST(Refusal, IsOneShortLine) {
  const auto channel = std::make_shared<RecordingChannel>();
  answerRefusal(channel, "a\nb\xff" + std::string(kMebibyte, 'x'));
  ASSERT_EQ(channel->replies.size(), 1U);
  EXPECT_EQ(errorIn(Json::parse(channel->replies[0])),
            "a\\nb\\xFF" + std::string(996, 'x') + "... (1048580 bytes)");
}

TEST_F(ManagedTelephone, AnswersWithTheLongestValueThatAReplyHolds) {
  const std::size_t around = jsonText({{"ok", true}, {"key", "ntp-secret"}, {"value", ""}}).size();
  const std::string longest(kMaxPayload - around, 's');
  ASSERT_EQ(set("ntp-secret", longest).at("ok"), true);
  EXPECT_EQ(get("ntp-secret").at("value"), longest);
  ASSERT_EQ(set("ntp-secret", longest + 's').at("ok"), true);
  EXPECT_EQ(errorIn(get("ntp-secret")),
            "the answer has 1048572 bytes; a reply holds at most 1048571");
}

TEST_F(ManagedTelephone, ListsItsKeysWithLongValuesClipped) {
  const std::string longest(1024, 's');
  ASSERT_EQ(set("ntp-secret", longest).at("ok"), true);
  EXPECT_EQ(telephone.request({{"verb", "keys"}}).at("keys")[6].at("value"), longest);
  ASSERT_EQ(set("ntp-secret", std::string(kMebibyte, 's')).at("ok"), true);
  const Json keys = telephone.request({{"verb", "keys"}}).at("keys");
  ASSERT_EQ(keys.size(), 16U);
  EXPECT_EQ(keys[6].at("value"), longest + "... (1048576 bytes)");
}

TEST_F(ManagedTelephone, ListsItsSecurityLogWithLongTextsClipped) {
  ASSERT_EQ(set("date-format", "1").at("ok"), true);
  ASSERT_EQ(set("ntp-secret", std::string(kMebibyte, 's')).at("ok"), true);
  const Json answer = telephone.request({{"verb", "security-log"}});
  ASSERT_EQ(answer.at("records").size(), 2U);
  EXPECT_EQ(answer.at("records")[0].at("text"), "ClockSettings set data date-format(1)");
  const std::string text = answer.at("records")[1].at("text");
  EXPECT_EQ(text.substr(4096), "... (1048611 bytes)");
}

TEST_F(ManagedTelephone, ListsItsSecurityLogInPages) {
  SecurityLog& log = telephone.device().securityLog();
  for (std::int64_t i = 0; i <= SecurityLog::kSets; ++i) {
    const std::string text = std::to_string(i) + std::string(i < 4000 ? 4080 : 1, 'x');
    log.record(1, 4, 1, 5, 3, false, text, "", "");
  }
  std::int64_t last = 1;  // the bound has taken it
  Json answer = {{"after", 0}};
  while (answer.contains("after")) {
    const std::int64_t after = answer["after"];
    answer = telephone.request({{"verb", "security-log"}, {"after", after}});
    ASSERT_LE(jsonText(answer).size(), kMaxPayload);
    ASSERT_FALSE(answer.at("records").empty());
    for (const Json& record : answer["records"]) ASSERT_EQ(record.at("number"), ++last);
    EXPECT_EQ(answer.at("kept"), SecurityLog::kSets);
    EXPECT_EQ(answer.at("dropped"), 1);
    EXPECT_EQ(
        answer.at("note"),
        "records kept: 5000; dropped: 1, because the log keeps the newest 5000 accepted sets, 2500 "
        "other accepted records and 2500 refused records; a power cut may lose the latest records; "
        "stopping the host does not");
  }
  EXPECT_EQ(last, SecurityLog::kSets + 1);
}

TEST_F(ManagedTelephone, AnswersForASecurityLogWithoutRecords) {
  EXPECT_EQ(telephone.request({{"verb", "security-log"}}), (Json{{"ok", true},
                                                                 {"records", Json::array()},
                                                                 {"kept", 0},
                                                                 {"dropped", 0},
                                                                 {"unwritten", 0}}));
  telephone.device().securityLog().record(1, 4, 1, 5, 3, false, "a", "", "");
  const Json answer = telephone.request({{"verb", "security-log"}});
  EXPECT_EQ(answer.at("kept"), 1);
  EXPECT_FALSE(answer.contains("after")) << answer;
  EXPECT_EQ(answer.at("note"),
            "a power cut may lose the latest records; stopping the host does not");
}

TEST_F(ManagedTelephone, ListsKeysInTableOrderWithCorrectSettable) {
  const Json keys = telephone.request({{"verb", "keys"}}).at("keys");
  ASSERT_EQ(keys.size(), managementKeys().size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const ManagementKey& row = managementKeys()[i];
    EXPECT_EQ(keys[i].at("key"), row.name);
    const std::string value(row.settable ? row.example : "1");
    EXPECT_EQ(set(std::string(row.name), value).at("ok"), keys[i].at("settable")) << row.name;
  }
}

TEST_F(ManagedTelephone, SetsALocalTime) {
  const auto setLocal = [&](const char* key, const char* local) {
    return telephone.request({{"verb", "set"}, {"key", key}, {"local", local}});
  };
  ASSERT_EQ(set("sntp-tz-offset", "-5").at("ok"), true);
  ASSERT_EQ(telephone.request({{"verb", "clock"}, {"action", "advance"}, {"seconds", 1}}).at("ok"),
            true);
  EXPECT_EQ(setLocal("time", "2026-03-08 01:59:50").at("ok"), true);
  EXPECT_EQ(get("time").at("value"), "2026-03-08T06:59:50+00:00");
  EXPECT_EQ(errorIn(setLocal("time", "noon")),
            "\"noon\" is not a local time; write `2026-03-08 01:59:50`, in the years 1970-2199");
  EXPECT_EQ(errorIn(setLocal("simple-time", "2026-03-08 01:59:50")),
            "the request needs a string member \"value\"");
}

TEST_F(ManagedTelephone, TellsAboutOneKey) {
  EXPECT_EQ(
      telephone.request({{"verb", "keys"}, {"key", "date-format"}}),
      (Json{{"ok", true},
            {"key", "date-format"},
            {"value", "0"},
            {"settable", true},
            {"state", 0},
            {"meaning", "how dates are shown"},
            {"values", "0 day.month.year, 1 year-month-day, 2 month/day/year; stored unchecked"},
            {"effect", "used from now on; observers are not notified"},
            {"example", "clockctl set date-format 1"}}));
  EXPECT_EQ(telephone.request({{"verb", "keys"}, {"key", "daylight-save-zone-text"}}).at("example"),
            "clockctl get daylight-save-zone-text");
  EXPECT_EQ(errorIn(telephone.request({{"verb", "keys"}, {"key", "tim"}})),
            "no key \"tim\"; did you mean \"time\"?");
}

TEST_F(ManagedTelephone, SaysThatNoClockAnswers) {
  telephone.device().management().dropAgents();
  EXPECT_EQ(errorIn(get("time")), "\"time\" cannot be read; no clock answers");
  EXPECT_EQ(errorIn(set("time", "x")), "\"time\" cannot be set; no clock answers");
  EXPECT_EQ(errorIn(get("tim")), "no key \"tim\"; did you mean \"time\"?");
}

TEST_F(ManagedTelephone, PointsToTheLogWhenTheClockFails) {
  playTheClock();
  played.answer = []() -> bool { throw std::runtime_error("a clock that fails"); };
  EXPECT_EQ(errorIn(get("time")), "\"time\" cannot be read; see `clockctl log`");
}

TEST(ManagedTelephoneWhoseStoreFails, DistinguishesStoreFailuresFromWrongValues) {
  MemoryDataAccess store;
  DeviceOptions options;
  options.store = &store;
  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, options};
  const auto set = [&](const char* key, const char* value) {
    return telephone.request({{"verb", "set"}, {"key", key}, {"value", value}});
  };
  ASSERT_EQ(set("daylight-save", "true").at("ok"), true);
  store.refuseSets(0, SIZE_MAX);
  for (const auto& [key, value] : {std::pair{"date-format", "1"},
                                   {"sntp-addr", "192.0.2.1"},
                                   {"ntp-secret", "s"},
                                   {"sntp-tz-offset", "-5"},
                                   {"daylight-save", "false"},
                                   {"daylight-save-zone-index", "9"}}) {
    EXPECT_EQ(errorIn(set(key, value)),
              quotedText(key) + " could not be stored; see `clockctl log`");
  }
  EXPECT_EQ(errorIn(set("daylight-save", "yes")),
            "\"daylight-save\" refused \"yes\"; it takes true or false");
  EXPECT_EQ(errorIn(set("daylight-save-zone-text", "x")),
            "\"daylight-save-zone-text\" cannot be set");
}

TEST_F(ManagedTelephone, ReplacesInvalidUtf8) {
  playTheClock();
  played.valueOf = [](const std::string& /*key*/) { return "a\xff\xc3z"; };
  EXPECT_EQ(get("time").at("value"), "a\xEF\xBF\xBD\xEF\xBF\xBDz");
  const Json keys = telephone.request({{"verb", "keys"}}).at("keys");
  ASSERT_EQ(keys.size(), 16U);
  for (const Json& row : keys) EXPECT_EQ(row.at("value"), "a\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST_F(ManagedTelephone, ShowsTheLatestLogEntriesThatFit) {
  constexpr int kWritten = 800;        // more bytes than a frame holds
  const std::string text(1000, '\1');  // six bytes each in JSON
  telephone.powerOn();
  for (int i = 0; i < kWritten; ++i) logAppUni("long", 2, "f", i, "%s", text.c_str());
  const Json entries = telephone.request({{"verb", "log"}}).at("entries");
  std::vector<int> lines;
  for (const Json& entry : entries) {
    if (entry.at("component") == "long") lines.push_back(entry.at("line"));
  }
  ASSERT_GT(lines.size(), kMebibyte / text.size() / 16);
  ASSERT_LT(lines.size(), kMebibyte / text.size() / 6);
  int line = kWritten - static_cast<int>(lines.size());
  for (const int shown : lines) EXPECT_EQ(shown, line++);
}

TEST_F(ManagedTelephone, ReplacesInvalidUtf8InLogs) {
  telephone.device().securityLog().record(1, 4, 1, 5, 3, true, "k\xff(v\xff)", "\xff", "\xff");
  logAppUni("k\xff", 2, "f\xff", 1, "%s", "v\xff");
  const Json records = telephone.request({{"verb", "security-log"}}).at("records");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].at("text"), "k\xEF\xBF\xBD(v\xEF\xBF\xBD)");
  const Json entries = telephone.request({{"verb", "log"}}).at("entries");
  std::size_t shown = 0;  // another thread may log something after it
  for (const Json& entry : entries) {
    if (entry.at("component") != "k\xEF\xBF\xBD") continue;
    EXPECT_EQ(entry.at("text"), "v\xEF\xBF\xBD");
    ++shown;
  }
  EXPECT_EQ(shown, 1U);
}

}  // namespace
}  // namespace host
