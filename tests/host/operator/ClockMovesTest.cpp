#include "operator/ClockMoves.h"

#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "Method.h"
#include "clock/VirtualClock.h"
#include "host/operator/LoopTasks.h"
#include "host/operator/RecordingChannel.h"
#include "operator/Controller.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"

namespace host {
namespace {

constexpr double kTwice = 2;
const std::string kToLeapDay = R"({"verb":"clock","action":"to","landmark":"leap-day"})";
const std::string kToDst = R"({"verb":"clock","action":"to","landmark":"dst"})";
const std::string kToHour = R"({"verb":"clock","action":"to","landmark":"hour"})";
const std::string kToMidnight = R"({"verb":"clock","action":"to","landmark":"midnight"})";
const std::string kToTheEnd = R"({"verb":"clock","action":"to","landmark":"2038"})";
constexpr const char* kBack = R"({"verb":"clock","action":"jump","seconds":1466035200})";

// A telephone whose clock the clients of a loop move.
class MovingTelephone : public ::testing::Test {
 protected:
  std::shared_ptr<RecordingChannel> begin(const std::string& request) {
    auto channel = std::make_shared<RecordingChannel>();
    controller.handle({request, channel});
    return channel;
  }
  // From then on no move jumps: a far one takes many slices.
  void setTimeByHand() {
    Method method("setTime", Method::call);
    for (const char* const name : {"setTimeHours", "setTimeMinutes", "setTimeSeconds"}) {
      method.addIntParameter(name, 0, Parameter::in);
    }
    EXPECT_TRUE(telephone.call(method));
  }

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
  VirtualClock& clock{telephone.device().clock()};
  LoopTasks tasks;
  Controller controller{telephone.device(),
                        {{}, {}, {}, {}, [this](auto task) { tasks.add(std::move(task)); }}};
};

TEST_F(MovingTelephone, RefusedMoveKeepsTheSpeedAndSaysWhatToDo) {
  clock.setSpeed(kTwice);
  const auto channel = begin(kToDst);
  EXPECT_EQ(clock.speed(), kTwice);
  ASSERT_EQ(channel->replies.size(), 1U);
  const std::string error = Json::parse(channel->replies[0]).at("error");
  EXPECT_EQ(error.find("no change to or from daylight saving was found in the 2 years after 2016-"),
            0U)
      << error;
  EXPECT_NE(error.find("; choose a zone that has one: set `daylight-save-zone-id`, and "
                       "`daylight-save` and `auto-daylight-save` to true"),
            std::string::npos)
      << error;
}

TEST_F(MovingTelephone, AbandonedMoveRestoresTheSpeed) {
  setTimeByHand();
  clock.setSpeed(kTwice);
  const auto channel = begin(kToLeapDay);
  EXPECT_EQ(clock.speed(), 0);
  channel->isWanted = false;
  tasks.runAll();
  EXPECT_EQ(clock.speed(), kTwice);
}

TEST_F(MovingTelephone, SpeedSetDuringTheMoveStays) {
  setTimeByHand();
  clock.setSpeed(kTwice);
  const auto channel = begin(kToLeapDay);
  clock.setSpeed(1);
  channel->isWanted = false;
  tasks.runAll();
  EXPECT_EQ(clock.speed(), 1);
}

TEST_F(MovingTelephone, PauseDuringTheMoveStays) {
  setTimeByHand();
  clock.setSpeed(kTwice);
  const auto channel = begin(kToLeapDay);
  begin(R"({"verb":"clock","action":"pause"})");
  channel->isWanted = false;
  tasks.runAll();
  EXPECT_EQ(clock.speed(), 0);
}

TEST_F(MovingTelephone, PausesAtTheEnd) {
  clock.setSpeed(kTwice);
  const auto channel = begin(kToHour);
  tasks.runAll();
  ASSERT_EQ(channel->replies.size(), 1U);
  EXPECT_NE(channel->replies[0].find("paused 10 s before"), std::string::npos)
      << channel->replies[0];
  EXPECT_EQ(clock.speed(), 0);
}

TEST_F(MovingTelephone, SaysWhereItStoppedOrWhyItCannotMove) {
  const std::pair<std::string, std::string> rows[] = {
      {kToHour, "paused 10 s before the next full hour, 20"},
      {kToMidnight, "paused 10 s before the next local midnight, 20"},
      {kToLeapDay, "paused 10 s before the next leap day, 20"},
      {kToTheEnd, "paused 10 s before the end of 32-bit time, 2038-01-19T03:14:07Z, 20"},
      {kToTheEnd, "the end of 32-bit time, 2038-01-19T03:14:07Z, is not ahead of 20"},
  };
  for (const auto& [request, expected] : rows) {
    const auto channel = begin(request);
    tasks.runAll();
    ASSERT_EQ(channel->replies.size(), 1U);
    EXPECT_NE(channel->replies[0].find('"' + expected), std::string::npos) << channel->replies[0];
  }
}

// As long as the hourly timer needs to expire after the jump, and once more.
TEST_F(MovingTelephone, FarLandmarkIsReachedByAJumpToTwoHoursBefore) {
  const auto before = clock.uptime();
  begin(kToLeapDay);
  tasks.runAll();
  const auto hours = std::chrono::floor<std::chrono::hours>(clock.uptime() - before);
  EXPECT_EQ(hours, std::chrono::hours(2));
}

// Another thread may set the clock at any moment, and that setting must not be lost.
TEST_F(MovingTelephone, TestsWithoutMovingTheClockWhetherTheServiceFollowsIt) {
  std::atomic<bool> ended = false;
  std::atomic<int> moved = 0;
  std::thread watch([&] {
    const std::chrono::seconds start(1'466'035'200);
    while (!ended) {
      const auto ahead = clock.wall() - start;
      if (ahead >= std::chrono::seconds(1) && ahead < std::chrono::seconds(2)) ++moved;
    }
  });
  for (int way = 0; way < 100; ++way) {
    begin(kBack);
    begin(kToLeapDay);
    tasks.runAll();
  }
  ended = true;
  watch.join();
  EXPECT_EQ(moved, 0);
}

}  // namespace
}  // namespace host
