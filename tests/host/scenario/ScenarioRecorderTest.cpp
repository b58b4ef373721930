#include "scenario/ScenarioRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "scenario/RecordedWords.h"

namespace host {
namespace {

using Lines = std::vector<std::string>;

constexpr std::int64_t kSecond = 1'000'000;

// A recorder that began at 1970-01-01T00:01:40Z, 100 s after power-on.
class Recorder : public ::testing::Test {
 protected:
  static RecordedStart start(bool followsClock = true) {
    RecordedStart start;
    start.device = {{"origin", "self"}, {"variant", 3},    {"softwareType", "Velmora QEX"},
                    {"mac", ""},        {"network", "up"}, {"followsClock", followsClock}};
    for (const std::string& key : startingKeys()) start.replies[key] = {{"ok", false}};
    start.replies["time"] = {{"ok", true}, {"value", "2030-01-01T00:00:00+00:00"}};
    start.replies["sntp-addr"] = {{"ok", true}, {"value", "192.0.2.254"}};
    start.wall = start.uptime = 100 * kSecond;
    return start;
  }

  // A frame of the client, `uptime` microseconds after the begin.
  Json frame(const char* direction, const char* kind, std::int64_t uptime, int id = 1) const {
    return {{"wall", 100 * kSecond + uptime + jumped},
            {"uptime", 100 * kSecond + uptime},
            {"speed", speed},
            {"peer", "client-7"},
            {"origin", "other"},
            {"direction", direction},
            {"kind", kind},
            {"id", id}};
  }

  void request(const Json& json, std::int64_t uptime, int id = 1) {
    Json entry = frame("received", "controlRequest", uptime, id);
    entry["json"] = json;
    recorder.add(entry);
  }
  void answer(const Json& json, std::int64_t uptime, int id = 1, std::int64_t acted = -1) {
    Json entry = frame("sent", "controlReply", uptime, id);
    if (acted >= 0) entry["acted"] = 100 * kSecond + acted;
    entry["json"] = json;
    recorder.add(entry);
  }
  void event(std::int64_t uptime) {
    Json entry = frame("sent", "event", uptime);
    entry["origin"] = "self";
    entry["method"] = "timeChangeEvent";
    entry["parameters"] = {{"timeChangeEventHours", 1}, {"timeChangeEventSeconds", 2}};
    recorder.add(entry);
  }
  void call(const Json& parameters, std::int64_t uptime) {
    Json entry = frame("received", "call", uptime);
    entry["method"] = "setDate";
    entry["parameters"] = parameters;
    recorder.add(entry);
  }

  Lines taken() { return std::exchange(lines, {}); }

  Lines lines;
  ScenarioRecorder recorder{start(), [this](const std::string& line) { lines.push_back(line); }};
  const Lines setup = taken();
  std::string speed = "paused";
  std::int64_t jumped = 0;
};

const Json kDone = {{"ok", true}};
const Json kAdvance = {{"verb", "clock"}, {"action", "advance"}, {"seconds", 60}};
const Json kSet = {{"verb", "set"}, {"key", "ntp-secret"}, {"value", "a \"b\""}};

TEST_F(Recorder, BeginsWithSettingsClockAndZone) {
  EXPECT_EQ(setup, (Lines{"variant 3", "software-type \"Velmora QEX\"", "network up",
                          "at 1970-01-01T00:01:38Z", "clock advance 0.999s",
                          "set sntp-addr 192.0.2.253", "set sntp-addr 192.0.2.254",
                          "clock advance 1.001s", "clock jump 1970-01-01T00:01:40Z"}));
}

TEST_F(Recorder, ATimeSetByHandIsSetAgain) {
  const ScenarioRecorder other(start(false),
                               [this](const std::string& line) { lines.push_back(line); });
  EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
            (Lines{"set time 2030-01-01T00:00:00+00:00", "set time 2030-01-01T00:00:00+00:00",
                   "clock advance 0s", "clock jump 1970-01-01T00:01:40Z"}));
}

TEST_F(Recorder, AMoveOfAPausedClockIsTheSameMove) {
  request(kAdvance, 0);
  event(30 * kSecond);
  answer(kDone, 60 * kSecond);
  EXPECT_EQ(taken(), (Lines{"clock advance 60s  # client-7",
                            "expect event timeChangeEvent timeChangeEventHours=1 "
                            "timeChangeEventSeconds=2"}));
}

TEST_F(Recorder, AStepDuringAMoveComesAtItsTime) {
  request(kAdvance, 0);
  request(kSet, 20 * kSecond, 2);
  answer(kDone, 20 * kSecond, 2);
  answer(kDone, 60 * kSecond);
  EXPECT_EQ(taken(), (Lines{"clock advance 20.0s", "set ntp-secret \"a \\\"b\\\"\"  # client-7",
                            "clock advance 40.0s"}));
}

TEST_F(Recorder, TimeOfARunningClockIsExactAndItsEventsAreLate) {
  speed = "1";
  request(kSet, 1'500'000);
  answer(kDone, 1'500'100);
  event(2'500'000);
  speed = "60";
  event(2'600'000);
  EXPECT_EQ(taken(),
            (Lines{"clock advance 1.5s", "set ntp-secret \"a \\\"b\\\"\"  # client-7",
                   "clock advance 1.0s", "expect event timeChangeEvent timeChangeEventHours=1",
                   "clock advance 0.1s", "expect event timeChangeEvent"}));
}

TEST_F(Recorder, AStepStandsWhereItTookEffectBetweenTheEvents) {
  speed = "60";
  request(kSet, 0);
  event(1000);  // before the set took effect
  event(3000);  // of the set
  answer(kDone, 4000, 1, 2000);
  EXPECT_EQ(taken(), (Lines{"clock advance 0.001s", "expect event timeChangeEvent",
                            "clock advance 0.001s", "set ntp-secret \"a \\\"b\\\"\"  # client-7",
                            "clock advance 0.001s", "expect event timeChangeEvent"}));
}

TEST_F(Recorder, AnEventDuringACallStandsAfterIt) {
  call({{"setDateDay", 1}, {"setDateMonth", 2}, {"setDateYear", 2030}}, 0);
  event(0);
  recorder.finish();
  const Lines written = taken();
  ASSERT_EQ(written.size(), 2U);
  EXPECT_TRUE(written[0].starts_with("expect refused call setDate")) << written[0];
}

TEST_F(Recorder, AnAnswerThatMayComeFromAnotherSecondIsNotExpected) {
  const Json get = {{"verb", "get"}, {"key", "time"}};
  const Json value = {{"ok", true}, {"value", "x"}};
  request(get, 100);
  answer(value, 200);
  request(get, 300);
  answer(value, kSecond);
  EXPECT_EQ(taken(), (Lines{"clock advance 0.0001s", "expect get time x  # client-7",
                            "clock advance 0.0002s", "get time"}));
}

TEST_F(Recorder, ASecondThatPassesInASetByHandMakesLaterAnswersUncertain) {
  const Json set = {{"verb", "set"}, {"key", "simple-time"}, {"value", "07:30"}};
  const Json get = {{"verb", "get"}, {"key", "time"}};
  for (const std::int64_t end : {kSecond + 1, kSecond + 3}) {
    request(set, end == kSecond + 1 ? 0 : end);
    answer(kDone, end);
    request(get, end);
    answer({{"ok", true}, {"value", "x"}}, end);
  }
  EXPECT_EQ(taken(),
            (Lines{"set simple-time 07:30  # client-7", "clock advance 1.000001s", "get time",
                   "clock advance 0.000002s", "set simple-time 07:30", "expect get time x"}));
}

// Then the seconds of the uptime begin where those of the recorded one did.
TEST_F(Recorder, BeginsAtTheSamePartOfASecond) {
  RecordedStart shifted = start();
  shifted.uptime += 250'000;
  const ScenarioRecorder other(shifted, [this](const std::string& line) { lines.push_back(line); });
  const auto at = std::find(lines.begin(), lines.end(), "at 1970-01-01T00:01:38Z");
  ASSERT_GE(lines.end() - at, 3);
  EXPECT_EQ(Lines(at + 1, at + 3),
            (Lines{"clock advance 0.25s", "clock jump 1970-01-01T00:01:38Z"}));
}

TEST_F(Recorder, ATimeSetByHandThatRanBeforeIsNotExpected) {
  RecordedStart running = start(false);
  running.running = true;
  ScenarioRecorder other(running, [this](const std::string& line) { lines.push_back(line); });
  lines.clear();
  Json entry = frame("received", "controlRequest", 0);
  entry["json"] = {{"verb", "get"}, {"key", "time"}};
  other.add(entry);
  entry["direction"] = "sent";
  entry["kind"] = "controlReply";
  entry["json"] = {{"ok", true}, {"value", "x"}};
  other.add(entry);
  EXPECT_EQ(lines, Lines{"get time  # client-7"});
}

TEST_F(Recorder, AnInjectionStandsWhereItsObserversActed) {
  request({{"verb", "inject"}, {"what", "dhcp"}, {"value", "5"}}, 0);
  answer(kDone, 200, 1, 85);
  EXPECT_EQ(taken(), (Lines{"clock advance 0.000085s", "inject dhcp 5  # client-7"}));
}

TEST_F(Recorder, TheSpeedMaxEndsIt) {
  speed = "max";
  event(2 * kSecond);
  EXPECT_TRUE(recorder.ended());
  speed = "1";
  request(kSet, 3 * kSecond);
  answer(kDone, 3 * kSecond);
  EXPECT_EQ(taken(), Lines());
}

TEST_F(Recorder, AMoveToTheNextTimerIsTimeThatPassed) {
  request({{"verb", "clock"}, {"action", "next"}}, 0);
  event(1000);
  answer(kDone, 1000);
  request(kSet, 1000);
  answer(kDone, 1000);
  EXPECT_EQ(taken(), (Lines{"clock advance 0.001s",
                            "expect event timeChangeEvent timeChangeEventHours=1 "
                            "timeChangeEventSeconds=2",
                            "set ntp-secret \"a \\\"b\\\"\"  # client-7"}));
}

TEST_F(Recorder, RefusalsAreExpected) {
  request({{"verb", "set"}, {"key", "date-format"}, {"value", ""}}, 0);
  answer({{"ok", false}, {"error", "x"}}, 0);
  request({{"verb", "get"}, {"key", "nope"}}, 0);
  answer({{"ok", false}, {"error", "no key \"nope\""}}, 0);
  EXPECT_EQ(taken(), (Lines{"expect refused set date-format \"\"  # client-7",
                            R"(# not replayed: {"verb":"get","key":"nope"}  # no key "nope")"}));
}

TEST_F(Recorder, ATimeIsSetAsAScenarioTakesIt) {
  request({{"verb", "set"}, {"key", "time"}, {"local", "2026-03-08 01:59:50"}}, 0);
  answer(kDone, 0);
  request({{"verb", "set"}, {"key", "time"}, {"value", "2016-12-31T23:59:60+00:00"}}, 0);
  answer(kDone, 0);
  const Lines written = taken();
  ASSERT_EQ(written.size(), 2U);
  EXPECT_EQ(written[0], "set time local \"2026-03-08 01:59:50\"  # client-7");
  EXPECT_TRUE(written[1].starts_with("# not replayed: ")) << written[1];
}

TEST_F(Recorder, AnOutsideChangeOfTheClockIsAJump) {
  request(kSet, 0);
  jumped = 50 * kSecond;
  answer(kDone, 0);
  EXPECT_EQ(taken().size(), 1U) << "the set's own effect";
  event(0);
  EXPECT_EQ(taken().size(), 1U);
  jumped = 90 * kSecond;
  event(0);
  const Lines written = taken();
  ASSERT_EQ(written.size(), 3U);
  EXPECT_EQ(written[1], "clock jump 1970-01-01T00:03:10Z");
}

TEST_F(Recorder, TheTimeBeforeAnOutsideChangePassesBeforeTheJump) {
  jumped = 50 * kSecond;
  event(10 * kSecond);
  EXPECT_EQ(taken(), (Lines{"clock advance 10.0s", "# another program set the clock",
                            "clock jump 1970-01-01T00:02:40Z",
                            "expect event timeChangeEvent timeChangeEventHours=1 "
                            "timeChangeEventSeconds=2"}));
}

TEST_F(Recorder, ReportsMissingFrames) {
  Json entry = frame("sent", "controlItem", 0);
  entry["lost"] = 5;
  recorder.add(entry);
  EXPECT_EQ(recorder.lost(), 5U);
  EXPECT_EQ(taken(), Lines{"# 5 frames are missing here"});
}

TEST_F(Recorder, ACallWithoutReplyIsRefused) {
  const Json date = {{"setDateDay", 1}, {"setDateMonth", 2}, {"setDateYear", 2030}};
  call(date, 0);
  Json reply = frame("sent", "reply", 0);
  reply["method"] = "setDate";
  reply["parameters"] = {{"setDateReturn", true}};
  recorder.add(reply);
  call({{"setDateDay", "1"}}, 0);
  call(date, 0);
  reply["parameters"] = {{"setDateReturn", false}};
  recorder.add(reply);
  recorder.finish();
  EXPECT_EQ(taken(),
            (Lines{"expect call setDate setDateDay=1 setDateMonth=2 setDateYear=2030 "
                   "setDateReturn=true  # client-7",
                   "expect refused call setDate setDateDay:string=1",
                   "expect false call setDate setDateDay=1 setDateMonth=2 setDateYear=2030 "
                   "setDateReturn=false"}));
  EXPECT_EQ(recorder.steps(), 3U);
}

}  // namespace
}  // namespace host
