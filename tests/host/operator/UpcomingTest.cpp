#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"

namespace host {
namespace {

using Texts = std::vector<std::string>;

// A telephone with the built plug-in, at its default time, 2016-06-16T00:00:00Z.
class UpcomingList : public ::testing::Test {
 protected:
  Json ask(const Json& request) { return telephone.request(request); }
  void set(const char* key, const char* value) {
    ask({{"verb", "set"}, {"key", key}, {"value", value}});
  }
  void pass(std::int64_t seconds) {
    ask({{"verb", "clock"}, {"action", "advance"}, {"seconds", seconds}});
  }
  Json answerTo(Json request) {
    request["verb"] = "upcoming";
    return ask(request);
  }
  Texts rows(const Json& request) {
    const Json answer = answerTo(request);
    Texts texts;
    for (const Json& row : answer.at("upcoming")) {
      texts.push_back(row.at("time").get<std::string>() + ' ' + row.at("kind").get<std::string>());
    }
    return texts;
  }
  void setNewYork() {
    set("sntp-tz-offset", "-5");
    set("daylight-save", "true");
    set("auto-daylight-save", "true");
    set("daylight-save-zone-id", "12");
    pass(0);
  }

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
};

TEST_F(UpcomingList, IsListedWithTheFirstOfEachKind) {
  EXPECT_EQ(rows({{"count", 2}}),
            (Texts{"2016-06-16T01:00:00Z hour", "2016-06-16T02:00:00Z hour",
                   "2016-06-16T12:00:00Z refresh", "2016-06-17T00:00:00Z midnight",
                   "2037-12-31T00:00:00Z limit", "2038-01-19T03:14:07Z limit"}));
  EXPECT_EQ(rows(Json::object()).size(), 23U);
}

TEST_F(UpcomingList, DoesNotMoveTheClock) {
  static_cast<void>(answerTo({{"count", 1000}}));
  EXPECT_EQ(ask({{"verb", "clock"}, {"action", "show"}}).at("utc"), "2016-06-16T00:00:00Z");
}

TEST_F(UpcomingList, EndsAtTheInstantAskedFor) {
  constexpr std::int64_t kOneOClock = 1'466'038'800;
  EXPECT_EQ(rows({{"until", kOneOClock}}), (Texts{"2016-06-16T01:00:00Z hour"}));
  EXPECT_EQ(rows({{"until", kOneOClock - 1}}), Texts());
  EXPECT_EQ(answerTo({{"until", kOneOClock - 3600}}).at("error"),
            "the telephone shows 2016-06-16T00:00:00Z, which is not before 2016-06-16T00:00:00Z; "
            "write a later instant");
}

TEST_F(UpcomingList, TellsThatMoreComeThanItLists) {
  constexpr std::int64_t kNow = 1'466'035'200;
  constexpr std::int64_t kDay = 24 + 1 + 2;  // rows: hours, midnight, refreshes
  const auto toldUntil = [this](std::int64_t hour) {
    return answerTo({{"until", kNow + hour * 3600}});
  };
  constexpr std::int64_t kLastHour = 37 * 24;  // has the 999th row
  EXPECT_EQ(toldUntil(kLastHour).at("upcoming").size(), 37 * kDay);
  EXPECT_FALSE(toldUntil(kLastHour + 1).contains("more"));
  EXPECT_EQ(toldUntil(kLastHour + 1).at("upcoming").size(), 1000U);
  EXPECT_EQ(toldUntil(kLastHour + 2).at("more"), true);
  EXPECT_EQ(toldUntil(kLastHour + 2).at("upcoming").size(), 1000U);
  EXPECT_FALSE(answerTo(Json::object()).contains("more"));
  EXPECT_FALSE(answerTo({{"count", 1}, {"until", kNow + 86400}}).contains("more"));
}

TEST_F(UpcomingList, HasNoMoreWhenTheFirstOfAKindIsTheLastRow) {
  constexpr std::int64_t kLastDay = 2'145'830'400;  // comes after 1000 rows
  ask({{"verb", "clock"}, {"action", "jump"}, {"seconds", kLastDay - 889 * 3600}});
  const Json answer = answerTo({{"until", kLastDay}});
  EXPECT_EQ(answer.at("upcoming").size(), 1001U);
  EXPECT_EQ(answer.at("upcoming").back().at("kind"), "limit");
  EXPECT_FALSE(answer.contains("more"));
}

// What comes true, hour for hour, is the clock's own behaviour.
TEST_F(UpcomingList, HappensAsListed) {
  set("simple-time", "23:30");
  pass(0);
  const Texts course = rows({{"count", 2}});
  EXPECT_EQ(course[0], "2016-06-17T00:00:00Z hour");
  EXPECT_EQ(course[1], "2016-06-17T00:00:00Z midnight");
  const std::size_t before = telephone.events().size();
  pass(1799);
  EXPECT_EQ(telephone.events().size(), before);
  pass(1);
  EXPECT_GE(telephone.events().size(), before + 2);
}

// The timers follow the uptime: after a jump the next hour is announced late.
TEST_F(UpcomingList, FollowsTheTimersAfterAJump) {
  ask({{"verb", "clock"}, {"action", "jump"}, {"seconds", 1'466'119'790}});  // 23:29:50
  EXPECT_EQ(rows({{"count", 3}, {"until", 1'466'206'200}}),
            (Texts{"2016-06-17T00:29:50Z hour", "2016-06-17T01:00:00Z hour",
                   "2016-06-17T02:00:00Z hour", "2016-06-17T11:29:50Z refresh"}));
}

TEST_F(UpcomingList, ShowsTheChangesOfTheZone) {
  setNewYork();
  const Json rows = answerTo({{"count", 1}}).at("upcoming");
  const auto change = std::find_if(rows.begin(), rows.end(),
                                   [](const Json& row) { return row["kind"] == "zone change"; });
  ASSERT_NE(change, rows.end());
  EXPECT_EQ((*change)["time"], "2016-11-06T06:00:00Z");
  EXPECT_EQ((*change)["local"], "2016-11-06T01:00:00-05:00");
  EXPECT_EQ((*change)["seconds"], 1'478'412'000);
  EXPECT_EQ((*change)["before"], -4 * 3600);
  EXPECT_EQ((*change)["after"], -5 * 3600);
}

TEST_F(UpcomingList, TellsTheLastDayInTheZoneOfTheTelephone) {
  setNewYork();
  const Json rows = answerTo({{"count", 1}}).at("upcoming");
  const auto limit = std::find_if(rows.begin(), rows.end(),
                                  [](const Json& row) { return row["kind"] == "limit"; });
  ASSERT_NE(limit, rows.end());
  EXPECT_EQ((*limit)["local"], "2037-12-31T00:00:00-05:00");
}

// As in `status`, and `clock next` stops there.
TEST_F(UpcomingList, HasTheArmedRestartAlsoWithoutServerOrNetwork) {
  pass(3600);
  Json restarts = answerTo({{"count", 6}}).at("upcoming");
  restarts.erase(std::remove_if(restarts.begin(), restarts.end(),
                                [](const Json& row) { return row["kind"] != "NTP restart"; }),
                 restarts.end());
  ASSERT_EQ(restarts.size(), 1U);
  EXPECT_EQ(restarts[0]["what"], "a timer expires: no client to restart");
  ask({{"verb", "clock"}, {"action", "next"}});
  EXPECT_EQ(ask({{"verb", "clock"}, {"action", "show"}}).at("utc"), restarts[0]["time"]);
}

TEST_F(UpcomingList, HasLaterRestartsOfTheNtpClientOnlyWithServerAndNetwork) {
  const auto restarts = [this] {
    Texts texts = rows({{"count", 4}});
    std::erase_if(texts, [](const std::string& row) { return !row.ends_with("NTP restart"); });
    return texts;
  };
  set("sntp-addr", "192.0.2.1");
  EXPECT_TRUE(restarts().empty());
  ask({{"verb", "inject"}, {"what", "network"}, {"value", "up"}});
  EXPECT_EQ(restarts(),
            (Texts{"2016-06-16T01:10:01Z NTP restart", "2016-06-16T02:10:01Z NTP restart"}));
  EXPECT_EQ(answerTo({{"count", 2}}).at("upcoming")[1].at("latest"), "2016-06-16T01:20:00Z");
  pass(3600);
  const Texts armed = restarts();
  ASSERT_EQ(armed.size(), 2U);
  EXPECT_TRUE(armed[0].starts_with("2016-06-16T01:1") ||
              armed[0].starts_with("2016-06-16T01:20:00"))
      << armed[0];
  EXPECT_EQ(armed[1], "2016-06-16T02:10:01Z NTP restart");
}

TEST_F(UpcomingList, OfATimeSetByHandEndsWith32Bits) {
  set("simple-date", "19.01.2038");
  set("simple-date", "31.12.2037");
  pass(0);
  EXPECT_EQ(rows({{"count", 1000}}).back(), "2038-01-19T03:14:07Z limit");
}

// 22:44:07 in that zone: each full hour stays 953 s ahead.
TEST_F(UpcomingList, OfATimeThatHasStoppedHappensAsListed) {
  setNewYork();
  set("sntp-tz-offset", "-4.5");
  set("simple-date", "31.12.2037");
  pass(30 * 86400);
  std::vector<std::int64_t> hours;
  const Json listed = answerTo({{"count", 3}}).at("upcoming");
  for (const Json& row : listed) {
    EXPECT_THAT(row.at("kind"), ::testing::AnyOf("hour", "refresh", "NTP restart"));
    if (row.at("kind") == "hour") hours.push_back(row.at("in"));
  }
  ASSERT_GE(hours.size(), 2U);
  EXPECT_EQ(hours[1] - hours[0], 953);
  const std::size_t before = telephone.events().size();
  pass(hours[1] - 1);
  EXPECT_EQ(telephone.events().size(), before + 1);
  pass(1);
  EXPECT_EQ(telephone.events().size(), before + 2);
}

TEST_F(UpcomingList, HasOffsetsForAYearIfTheyAreAskedFor) {
  EXPECT_FALSE(answerTo({{"count", 1}}).contains("offsets"));
  setNewYork();
  const Json offsets = answerTo({{"count", 1}, {"plot", true}}).at("offsets");
  ASSERT_EQ(offsets.size(), 3U);
  EXPECT_EQ(offsets[0], (Json{{"seconds", 1'466'035'200}, {"offset", -4 * 3600}}));
  EXPECT_EQ(offsets[1], (Json{{"seconds", 1'478'412'000}, {"offset", -5 * 3600}}));
  EXPECT_EQ(offsets[2], (Json{{"seconds", 1'489'302'000}, {"offset", -4 * 3600}}));
}

}  // namespace
}  // namespace host
