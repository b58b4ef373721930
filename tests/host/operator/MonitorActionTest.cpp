#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "clock/VirtualClock.h"
#include "host/operator/RecordingChannel.h"
#include "operator/Controller.h"
#include "remote/CodecTable.h"
#include "remote/EventStamp.h"
#include "remote/FrameTap.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"

namespace host {
namespace {

using namespace std::chrono_literals;

// A device with a tap, and a client that monitors it.
class Monitor : public ::testing::Test {
 protected:
  Monitor() { controller.handle({R"({"verb":"monitor"})", channel}); }

  // The entry of a frame, without its stamp and peer.
  Json shown(FrameKind kind, std::string_view payload) {
    tap.show({"client-7", "uid 1, pid 2", codec, true, {kind, 5, payload}});
    return Json::parse(channel->items.back());
  }

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
  HostFacts facts() {
    HostFacts facts;
    facts.tap = &tap;
    return facts;
  }

  FrameTap tap;
  JsonCodec codec;
  Controller controller{telephone.device(), facts()};
  const std::shared_ptr<RecordingChannel> channel = std::make_shared<RecordingChannel>();
};

TEST_F(Monitor, BeginsWithTheDevice) {
  ASSERT_EQ(channel->items.size(), 1U);
  const Json entry = Json::parse(channel->items.front());
  EXPECT_EQ(
      entry.at("begin").dump(),
      R"({"origin":"","variant":0,"softwareType":"","mac":"","network":"down","followsClock":true,"settled":true})");
  EXPECT_EQ(entry.at("speed"), "paused");
}

TEST_F(Monitor, KnowsThatTheTimeWasSetByHandHoweverFastTheClockIs) {
  static_cast<void>(
      telephone.request({{"verb", "set"}, {"key", "simple-time"}, {"value", "07:30"}}));
  static_cast<void>(telephone.request({{"verb", "clock"}, {"action", "advance"}, {"seconds", 60}}));
  telephone.device().clock().setSpeed(1e6);
  controller.handle({R"({"verb":"monitor"})", channel});
  const Json entry = Json::parse(channel->items.back());
  EXPECT_EQ(entry.at("begin").at("followsClock"), false);
}

TEST_F(Monitor, ShowsEachKindOfFrame) {
  EXPECT_EQ(shown(FrameKind::hello, "json").at("codec"), "json");
  const Json call = shown(
      FrameKind::call,
      R"({"name":"m","type":0,"parameters":[{"name":"a","direction":0,"value":8},{"name":"b","direction":0,"value":"8"}]})");
  EXPECT_EQ(call.at("method"), "m");
  EXPECT_EQ(call.at("parameters").dump(), R"({"a":8,"b":"8"})");
  EXPECT_EQ(call.at("kind"), "call");
  EXPECT_EQ(call.at("peer"), "client-7");
  EXPECT_EQ(call.at("origin"), "uid 1, pid 2");
  EXPECT_EQ(call.at("direction"), "received");
  EXPECT_EQ(call.at("id"), 5);
  EXPECT_EQ(shown(FrameKind::controlRequest, R"({"verb":"keys"})").at("json").dump(),
            R"({"verb":"keys"})");
}

TEST_F(Monitor, ShowsTheTimeOfATimedEvent) {
  const EventStampBytes time = encodeEventStamp({std::chrono::seconds(1'772'953'200), -18'000s});
  const std::string bytes(time.data(), time.size());
  const Json event = shown(FrameKind::timedEvent, bytes + R"({"name":"e"})");
  EXPECT_EQ(event.at("kind"), "timedEvent");
  EXPECT_EQ(event.at("method"), "e");
  EXPECT_EQ(event.at("utc"), "2026-03-08T07:00:00Z");
  EXPECT_EQ(event.at("utcSeconds"), 1'772'953'200);
  EXPECT_EQ(event.at("local"), "2026-03-08T02:00:00-05:00");
  EXPECT_EQ(event.at("localSeconds"), 1'772'935'200);
  for (const std::string& odd : {std::string("12345678901"), std::string(12, '\x7f')}) {
    EXPECT_TRUE(shown(FrameKind::timedEvent, odd).at("undecodable").get<bool>());
  }
}

TEST_F(Monitor, LeavesContentOutThatIsTooLongOrNotInItsFormat) {
  EXPECT_TRUE(shown(FrameKind::call, "x").at("undecodable").get<bool>());
  EXPECT_TRUE(shown(FrameKind::controlRequest, "\xFF").at("undecodable").get<bool>());
  const Json clipped = shown(FrameKind::controlReply, std::string(32 * 1024 + 1, 'x'));
  EXPECT_TRUE(clipped.at("clipped").get<bool>());
  EXPECT_EQ(clipped.at("bytes"), 32 * 1024 + 1);
}

// Reading and building an object takes quadratic time.
TEST_F(Monitor, LeavesContentOutThatHasTooManyMembers) {
  std::string members;
  std::string parameters;
  for (int i = 0; i <= 64; ++i) {
    const std::string name = (i == 0 ? "\"" : ",\"") + std::to_string(i) + '"';
    members.append(name).append(":0");
    parameters += (i == 0 ? "" : ",") + (R"({"name":"p)" + std::to_string(i)) +
                  R"(","direction":0,"value":0})";
  }
  EXPECT_TRUE(shown(FrameKind::controlRequest, '{' + members + '}').at("undecodable").get<bool>());
  const Json call =
      shown(FrameKind::call, R"({"name":"m","type":0,"parameters":[)" + parameters + "]}");
  EXPECT_EQ(call.at("method"), "m");
  EXPECT_TRUE(call.at("clipped").get<bool>());
  EXPECT_FALSE(call.contains("parameters"));
}

TEST_F(Monitor, ShowsTheSpeedAsClockShowDoes) {
  telephone.device().clock().setSpeed(std::numeric_limits<double>::infinity());
  EXPECT_EQ(shown(FrameKind::hello, "a").at("speed"), "max");
}

TEST_F(Monitor, ShowsWhenARequestTookEffect) {
  VirtualClock& clock = telephone.device().clock();
  static_cast<void>(shown(FrameKind::hello, "a"));  // begins anew
  clock.advance(2s);
  const std::int64_t uptime = clock.uptime() / 1us;
  EXPECT_TRUE(clock.setWall(90s));
  clock.advance(1s);
  const Json request = shown(FrameKind::hello, "a");
  EXPECT_EQ(request.at("acted"), request.at("uptime"));
  EXPECT_TRUE(clock.setWall(90s));
  clock.advance(1s);
  tap.show({"client-7", "uid 1, pid 2", codec, false, {FrameKind::controlReply, 5, "{}"}});
  EXPECT_EQ(Json::parse(channel->items.back()).at("acted"), uptime + 1'000'000);
}

TEST_F(Monitor, CountsFramesThatAreLostWithoutMemory) {
  channel->memory = false;
  static_cast<void>(shown(FrameKind::hello, "a"));
  static_cast<void>(shown(FrameKind::hello, "b"));
  channel->memory = true;
  EXPECT_EQ(shown(FrameKind::hello, "c").at("lost"), 2);
}

TEST_F(Monitor, CountsFramesWhileTheClientDoesNotRead) {
  channel->room = false;
  static_cast<void>(shown(FrameKind::hello, "a"));
  static_cast<void>(shown(FrameKind::hello, "b"));
  EXPECT_EQ(channel->items.size(), 1U);
  channel->room = true;
  EXPECT_EQ(shown(FrameKind::hello, "c").at("lost"), 2);
  EXPECT_FALSE(shown(FrameKind::hello, "d").contains("lost"));
}

TEST_F(Monitor, EndsWithItsClient) {
  channel->hangUp();
  static_cast<void>(shown(FrameKind::hello, "a"));
  EXPECT_EQ(channel->items.size(), 1U);
  EXPECT_EQ(channel.use_count(), 1);
}

TEST(MonitorWithoutClients, IsRefused) {
  Plugin plugin{CLOCK_PLUGIN};
  const Json answer = ScenarioDevice(plugin, {}).request({{"verb", "monitor"}});
  EXPECT_EQ(answer.at("error"), "this telephone has no clients to monitor");
}

}  // namespace
}  // namespace host
