#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "DataStorage.h"
#include "Threadable.h"
#include "Threader.h"
#include "framework/ApplicationLog.h"
#include "runtime/ChangeRecorder.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"

namespace host {
namespace {

// A telephone with the built plug-in, at its default time, 2016-06-16T00:00:00Z.
class TelephoneWithStatus : public ::testing::Test {
 protected:
  Json ask(const char* request) { return telephone.request(Json::parse(request)); }
  Json status() { return ask(R"({"verb":"status"})"); }
  void set(const char* key, const char* value) {
    static_cast<void>(telephone.request({{"verb", "set"}, {"key", key}, {"value", value}}));
  }
  void pass(std::int64_t seconds) {
    static_cast<void>(
        telephone.request({{"verb", "clock"}, {"action", "advance"}, {"seconds", seconds}}));
  }
  std::vector<std::string> timers() {
    std::vector<std::string> texts;
    const Json now = status();
    for (const Json& timer : now.at("timers")) {
      texts.push_back(timer.at("name").get<std::string>() + ' ' +
                      timer.at("time").get<std::string>());
    }
    return texts;
  }

  using Texts = std::vector<std::string>;

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
};

// Watching it would push out the reason of a refusal.
TEST_F(TelephoneWithStatus, LeavesTheLogAlone) {
  // Of calls alone: the service's threads log their start when they are ready.
  const auto entries = [&] {
    const Json log = ask(R"({"verb":"log"})");
    return std::ranges::count_if(log.at("entries"), [](const Json& entry) {
      return entry.at("component") == "ClockServiceInvoker";
    });
  };
  Method call("getTime", Method::call);
  ASSERT_TRUE(telephone.call(call));
  const auto before = entries();
  ASSERT_GT(before, 0);
  static_cast<void>(status());
  EXPECT_EQ(entries(), before);
  ASSERT_TRUE(telephone.call(call));
  EXPECT_GT(entries(), before);
}

TEST_F(TelephoneWithStatus, ShowsTheSavedTimeAndItsAge) {
  EXPECT_FALSE(status().contains("saved"));
  pass(13 * 3600);
  const Json now = status();
  EXPECT_EQ(now.at("source"), "built-in start time");
  EXPECT_EQ(now.at("byHand"), false);
  EXPECT_EQ(now.at("shown"), (Json{{"time", "13:00"},
                                   {"date", "16.06.16"},
                                   {"dateShort", "16.06."},
                                   {"utc", "2016-06-16T13:00:00Z"},
                                   {"local", "2016-06-16T13:00:00+00:00"},
                                   {"seconds", 1'466'082'000}}));
  EXPECT_EQ(now.at("system"), "2016-06-16T13:00:00Z");
  EXPECT_EQ(now.at("saved"), (Json{{"time", "2016-06-16T12:00:00Z"}, {"age", 3600}}));
  EXPECT_EQ(now.at("changed").at("from"), "1970-01-01T00:00:00Z");
  EXPECT_EQ(now.at("changed").at("age"), 13 * 3600);
  EXPECT_EQ(now.at("clock"), (Json{{"source", "virtual"}, {"speed", 0.0}, {"uptime", 13 * 3600}}));
  EXPECT_FALSE(now.contains("report"));
}

TEST_F(TelephoneWithStatus, ShowsThatATimeSetByHandNoLongerFollowsTheSystemTime) {
  set("simple-time", "07:30");
  ask(R"({"verb":"clock","action":"jump","seconds":1893456000})");
  pass(60);
  const Json now = status();
  EXPECT_EQ(now.at("source"), "by hand");
  EXPECT_EQ(now.at("byHand"), true);
  EXPECT_EQ(now.at("shown").at("utc"), "2016-06-16T07:31:00Z");
  EXPECT_EQ(now.at("system"), "2030-01-01T00:01:00Z");
  EXPECT_EQ(now.at("changed").at("cause"), "set simple-time");
  EXPECT_EQ(now.at("changed").at("from"), "2016-06-16T00:00:00Z");
  EXPECT_EQ(now.at("changed").at("who"), "device");
  EXPECT_EQ(now.at("changed").at("age"), 60);
  EXPECT_EQ(now.at("systemChanged").at("cause"), "clock jump");
  EXPECT_EQ(now.at("systemChanged").at("to"), "2030-01-01T00:00:00Z");
}

// Saves a time, as the listener of the pipe does with a report.
class Report final : public Threadable {
 public:
  Report(Device& device, std::string time) : m_device(device), m_time(std::move(time)) {
    unsigned long id = 0;
    Threader threader;
    EXPECT_TRUE(threader.spawn(&id, this, "report", votkThreadPriorityNormal, 0));
    threader.destroy(id);
  }
  void run() override {
    EXPECT_TRUE(m_device.changes().setItem(DASUtilsStrings::ClockSettingsSchema, "FallbackDateTime",
                                           m_time));
  }

 private:
  Device& m_device;
  const std::string m_time;
};

TEST_F(TelephoneWithStatus, ShowsWhatTheNtpClientReportedAlsoAfterAJump) {
  const Report report(telephone.device(), "2026-03-08T06:59:50+00:00");
  ask(R"({"verb":"clock","action":"jump","seconds":0})");
  pass(60);
  EXPECT_EQ(status().at("report"), (Json{{"time", "2026-03-08T06:59:50Z"}, {"age", 60}}));
}

TEST_F(TelephoneWithStatus, ShowsTheOtherSources) {
  Method call("setTimeInt", Method::call);
  call.addIntParameter("setTime", 1'893'456'000, Parameter::in);
  static_cast<void>(telephone.call(call));
  EXPECT_EQ(status().at("source"), "call setTimeInt");
  ask(R"({"verb":"clock","action":"jump","seconds":0})");
  EXPECT_EQ(status().at("source"), "clock jump");
}

TEST_F(TelephoneWithStatus, NamesTheServicesTimersWithTheTimeThatItWillShow) {
  EXPECT_EQ(timers(),
            (Texts{"time sync 2016-06-16T01:00:00Z", "fallback refresh 2016-06-16T12:00:00Z",
                   "date sync 2016-06-17T00:00:00Z"}));
  set("simple-time", "23:50");
  EXPECT_EQ(timers().front(), "time changed 2016-06-16T23:50:00Z");
  pass(0);
  EXPECT_EQ(timers(), (Texts{"time sync 2016-06-17T00:00:00Z", "date sync 2016-06-17T00:00:00Z",
                             "fallback refresh 2016-06-17T11:50:00Z"}));
  pass(600);
  const Texts after = timers();
  ASSERT_EQ(after.size(), 4U);
  EXPECT_TRUE(after[0].starts_with("NTP restart 2016-06-17T00:1")) << after[0];
  EXPECT_EQ(after[1], "time sync 2016-06-17T01:00:00Z");
  EXPECT_EQ(after[3], "date sync 2016-06-18T00:00:00Z");
  telephone.restart();
  EXPECT_EQ(timers().front().substr(0, 9), "time sync");
}

TEST_F(TelephoneWithStatus, ShowsTheZoneAndItsNextChange) {
  EXPECT_FALSE(status().at("zone").contains("next"));
  for (const auto& [key, value] : {std::pair("sntp-tz-offset", "-5"),
                                   {"daylight-save", "true"},
                                   {"auto-daylight-save", "true"},
                                   {"daylight-save-zone-id", "12"}})
    set(key, value);
  pass(0);
  const Json zone = status().at("zone");
  EXPECT_EQ(zone.at("offset"), -4 * 3600);
  EXPECT_EQ(zone.at("abbreviation"), "DST");
  EXPECT_EQ(zone.at("daylight"), true);
  EXPECT_EQ(status().at("shown").at("local"), "2016-06-15T20:00:00-04:00");
  EXPECT_EQ(zone.at("next"), (Json{{"time", "2016-11-06T06:00:00Z"}, {"offset", -5 * 3600}}));
}

TEST_F(TelephoneWithStatus, ShowsServerAndTheLastLineOfItsClient) {
  EXPECT_EQ(status().at("ntp"), (Json{{"server", ""}, {"state", "stopped"}}));
  set("sntp-addr", "192.0.2.1");
  EXPECT_EQ(status().at("ntp"), (Json{{"server", "192.0.2.1"}, {"state", "stopped"}}));
  for (const char* const line : {"first", "last"}) {
    LogEntryView entry;
    entry.component = "ntpclient";
    entry.text = line;
    ApplicationLog::instance().write(entry);
  }
  EXPECT_EQ(status().at("ntp").at("said"), "last");
}

}  // namespace
}  // namespace host
