#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/Origin.h"
#include "clock/VirtualClock.h"
#include "runtime/ChangeRecorder.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"
#include "services/History.h"

namespace host {
namespace {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;
using std::chrono::seconds;

// A telephone with the built plug-in, powered on, at its default time.
class TelephoneWithChangeRecorder : public ::testing::Test {
 protected:
  TelephoneWithChangeRecorder() { static_cast<void>(telephone.device()); }

  Json ask(const char* request) { return telephone.request(Json::parse(request)); }
  void set(const char* key, const char* value) {
    static_cast<void>(telephone.request({{"verb", "set"}, {"key", key}, {"value", value}}));
  }
  void call(const char* name, const std::vector<std::pair<const char*, int>>& parameters) {
    Method method(name, Method::call);
    for (const auto& [parameter, value] : parameters) {
      method.addIntParameter(parameter, value, Parameter::in);
    }
    static_cast<void>(telephone.call(method));
  }

  // The changes after those of the start.
  Lines history(std::size_t skipped = 2) {
    Lines lines;
    const Json answer = ask(R"({"verb":"history"})");
    for (const Json& row : answer.at("changes")) {
      lines.push_back(row["what"].get<std::string>() + ": " + row["from"].get<std::string>() +
                      " -> " + row["to"].get<std::string>() + " (" +
                      row["cause"].get<std::string>() + ')');
    }
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(skipped));
    return lines;
  }
  bool logged(const std::string& change) {
    const Lines texts = telephone.logTexts().all();
    const std::string text = "the system time was changed without the service, from " + change;
    return std::find(texts.begin(), texts.end(), text) != texts.end();
  }
  bool setWall(seconds wall, milliseconds more, VirtualClock::Setter setter) {
    return telephone.device().clock().setWall(wall + more, setter);
  }

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
};

TEST_F(TelephoneWithChangeRecorder, BeginsWithTheBuiltInTime) {
  EXPECT_EQ(history(0),
            (Lines{"clock: 1970-01-01T00:00:00Z -> 2016-06-16T00:00:00Z (built-in start time)",
                   "zone:  -> LOC00:00 (start)"}));
}

TEST_F(TelephoneWithChangeRecorder, BeginsWithTheSavedTimeOnceThereIsOne) {
  ask(R"({"verb":"clock","action":"advance","seconds":46800})");
  telephone.device().history().write();
  telephone.powerCut();
  const std::string start = "clock: 1970-01-01T00:00:00Z -> 2016-06-16T12:00:00Z (saved time)";
  EXPECT_EQ(history(), Lines{start});
  EXPECT_EQ(ask(R"({"verb":"status"})").at("source"), "saved time");
}

TEST_F(TelephoneWithChangeRecorder, ShowsCauseOldAndNewValueOfEachChange) {
  set("sntp-tz-offset", "-5");
  ask(R"({"verb":"clock","action":"next"})");
  set("sntp-tz-offset", "-5");  // no change
  set("sntp-tz-offset", "");    // refused
  set("simple-time", "07:30");
  call("setDate", {{"setDateDay", 8}, {"setDateMonth", 3}, {"setDateYear", 2026}});
  set("date-format", "2");
  ask(R"({"verb":"reset"})");
  EXPECT_EQ(history(),
            (Lines{"TimezoneOffset:  -> -5 (set sntp-tz-offset)",
                   "zone: LOC00:00 -> LOC05:00 (set sntp-tz-offset)",
                   "clock: 2016-06-16T00:00:00Z -> 2016-06-15T12:30:00Z (set simple-time)",
                   "clock: 2016-06-15T12:30:00Z -> 2026-03-08T12:30:00Z (call setDate)",
                   "DateFormat:  -> 2 (set date-format)", "DateFormat: 2 -> 0 (reset)"}));
}

// Also after a call without a reply.
TEST_F(TelephoneWithChangeRecorder, ShowsWhatMovedTheClockWithoutTheService) {
  call("setTimeInt", {{"setTime", 1'893'456'000}});
  ask(R"({"verb":"clock","action":"jump","seconds":0})");
  ask(R"({"verb":"clock","action":"to","landmark":"2038"})");
  EXPECT_TRUE(setWall(seconds(5), {}, VirtualClock::Setter::program));
  EXPECT_EQ(history(),
            (Lines{"clock: 2016-06-16T00:00:00Z -> 2030-01-01T00:00:00Z (call setTimeInt)",
                   "clock: 2030-01-01T00:00:00Z -> 1970-01-01T00:00:00Z (clock jump)",
                   "clock: 1970-01-01T00:00:00Z -> 2038-01-19T01:13:57Z (clock to)",
                   "clock: 2038-01-19T03:13:57Z -> 1970-01-01T00:00:05Z (another program)"}));
  EXPECT_TRUE(logged("2030-01-01T00:00:00Z to 1970-01-01T00:00:00Z: clock jump, device"));
  EXPECT_TRUE(logged("2038-01-19T03:13:57Z to 1970-01-01T00:00:05Z: another program, device"));
}

// A program that sets the machine's clock does not notify the host.
TEST_F(TelephoneWithChangeRecorder, FindsAChangeByAnotherProgram) {
  Device& device = telephone.device();
  device.changes().checkMachineClock();
  EXPECT_TRUE(history().empty());
  device.clock().onWallSet({});
  EXPECT_TRUE(setWall(seconds(1'893'456'000), {}, VirtualClock::Setter::jump));
  device.changes().checkMachineClock();
  device.changes().checkMachineClock();
  EXPECT_EQ(history(), (Lines{"clock: 2016-06-16T00:00:00Z -> 2030-01-01T00:00:00Z (another "
                              "program)"}));
}

TEST_F(TelephoneWithChangeRecorder, LeavesOutTheTimeServersSmallCorrections) {
  const seconds now(1'466'035'200);
  EXPECT_TRUE(setWall(now, milliseconds(999), VirtualClock::Setter::timeServer));
  EXPECT_TRUE(history().empty());
  EXPECT_TRUE(setWall(now, milliseconds(1999), VirtualClock::Setter::timeServer));
  EXPECT_EQ(history().size(), 1U);
}

// The system time, which such a clock no longer follows, was moved in between.
TEST_F(TelephoneWithChangeRecorder, ShowsTheTimeThatWasShownBeforeASetByHand) {
  set("simple-time", "07:30");
  ask(R"({"verb":"clock","action":"jump","seconds":0})");
  set("simple-time", "08:00");
  EXPECT_EQ(history().back(),
            "clock: 2016-06-16T07:30:00Z -> 2016-06-16T08:00:00Z (set simple-time)");
}

TEST_F(TelephoneWithChangeRecorder, LeavesOutASetToTheSameSecond) {
  const seconds now(1'466'035'200);
  for (const auto setter : {VirtualClock::Setter::hand, VirtualClock::Setter::jump}) {
    EXPECT_TRUE(setWall(now, milliseconds(500), setter));
  }
  EXPECT_TRUE(history().empty());
  EXPECT_EQ(telephone.device().changes().origin().source, "by hand");
}

TEST_F(TelephoneWithChangeRecorder, HidesTheSecret) {
  set("ntp-secret", "one");
  set("ntp-secret", "two");
  EXPECT_EQ(history(), (Lines{"NTPsharedSecret:  -> (hidden) (set ntp-secret)",
                              "NTPsharedSecret: (hidden) -> (hidden) (set ntp-secret)"}));
}

TEST_F(TelephoneWithChangeRecorder, SurvivesARestartAndTellsWho) {
  const std::string origin = "uid 1000, pid 4711";
  {
    const OriginScope scope(origin);
    ask(R"({"verb":"clock","action":"jump","seconds":0})");
  }
  telephone.device().history().write();
  telephone.powerCut();
  const Json rows = ask(R"({"verb":"history","count":2})")["changes"];
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0]["who"], origin);
  EXPECT_EQ(rows[1]["cause"], "built-in start time");
  EXPECT_EQ(rows[1]["who"], "device");
}

}  // namespace
}  // namespace host
