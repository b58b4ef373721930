// The host's own records in the security log, in addition to the service's records of sets.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "Method.h"
#include "base/Origin.h"
#include "clock/VirtualClock.h"
#include "host/operator/LoopTasks.h"
#include "host/operator/RecordingChannel.h"
#include "operator/Controller.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"
#include "services/ManagementThread.h"
#include "services/SecurityLog.h"
#include "support/FileContent.h"
#include "support/Part.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

// A client that the kernel knows.
class KnownChannel : public RecordingChannel {
 public:
  [[nodiscard]] const std::string& origin() const override { return m_origin; }

 private:
  const std::string m_origin = "uid 1000, pid 4711";
};

// A telephone with the built plug-in, powered on, at its default time.
class RecordedTelephone : public ::testing::Test {
 protected:
  void ask(const char* request) { static_cast<void>(telephone.request(Json::parse(request))); }
  void call(const char* name, const std::vector<std::pair<const char*, int>>& parameters) {
    Method method(name, Method::call);
    for (const auto& [parameter, value] : parameters) {
      method.addIntParameter(parameter, value, Parameter::in);
    }
    static_cast<void>(telephone.call(method));
  }
  SecurityLog& log() { return telephone.device().securityLog(); }

  // Outcome, event code and text of each record.
  std::vector<std::string> records() {
    std::vector<std::string> lines;
    for (const SecurityRecord& record : log().list(0, 100)) {
      lines.push_back((record.failure ? "refused " : "accepted ") +
                      std::to_string(record.eventCode) + ' ' + record.text);
    }
    return lines;
  }

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
};

using Lines = std::vector<std::string>;

TEST_F(RecordedTelephone, RecordsClockActions) {
  ask(R"({"verb":"clock","action":"show"})");
  ask(R"({"verb":"clock","action":"jump","seconds":1893456000})");
  ask(R"({"verb":"clock","action":"advance","seconds":60})");
  ask(R"({"verb":"clock","action":"jump","seconds":-1})");
  ask(R"({"verb":"clock","action":"to","landmark":"noon"})");
  ask(R"({"verb":"clock","action":"speed","speed":"0"})");
  ask(R"({"verb":"clock","action":"jump","seconds":0})");
  ask(R"({"verb":"clock","action":"jump","local":"1970-01-01 02:00:00"})");
  EXPECT_EQ(records(),
            (Lines{"accepted 4 Clock jump 2030-01-01T00:00:00Z, from 2016-06-16T00:00:00Z",
                   "accepted 4 Clock advance 60, from 2030-01-01T00:00:00Z",
                   "refused 4 Clock jump -1, from 2030-01-01T00:01:00Z",
                   "refused 4 Clock to noon, from 2030-01-01T00:01:00Z",
                   "accepted 4 Clock speed 0, from 2030-01-01T00:01:00Z",
                   "accepted 4 Clock jump 1970-01-01T00:00:00Z, from 2030-01-01T00:01:00Z",
                   "accepted 4 Clock jump local 1970-01-01 02:00:00, from 1970-01-01T00:00:00Z"}));
}

TEST_F(RecordedTelephone, RecordsInjects) {
  ask(R"({"verb":"inject","what":"jack","plug":5,"status":1})");
  ask(R"({"verb":"inject","what":"value","key":"k","value":"v"})");
  ask(R"({"verb":"inject","what":"user-data","key":"k","value":"yes"})");
  EXPECT_EQ(records(), (Lines{"accepted 5 Inject jack 5 1", "accepted 5 Inject value k v",
                              "refused 5 Inject user-data k yes"}));
}

TEST_F(RecordedTelephone, RecordsRemoteSetsWithTheirOutcome) {
  call("getTime", {});
  call("setDate", {{"setDateDay", 29}, {"setDateMonth", 2}, {"setDateYear", 2028}});
  call("setDate", {{"setDateDay", 1}, {"setDateMonth", 1}, {"setDateYear", 2038}});
  call("setTime", {{"setTimeHours", 23}, {"setTimeMinutes", 59}, {"setTimeSeconds", 5}});
  call("setTime", {{"setTimeHours", 23}});
  call("setTimeInt", {{"setTime", 1893456000}});
  call("setTimeInt", {{"settime", 1893456000}});
  call("setFallbackTime", {});
  EXPECT_EQ(
      records(),
      (Lines{"accepted 6 Remote call setDate(29, 2, 2028)",
             "refused 6 Remote call setDate(1, 1, 2038)",
             "accepted 6 Remote call setTime(23, 59, 5)", "refused 6 Remote call setTime(23, ?, ?)",
             "accepted 6 Remote call setTimeInt(1893456000)", "refused 6 Remote call setTimeInt(?)",
             "accepted 6 Remote call setFallbackTime()"}));
}

// The service says so in its log alone, since the call has no reply.
TEST_F(RecordedTelephone, RecordsASetThatATimeServerForbidsAsRefused) {
  ask(R"({"verb":"set","key":"sntp-addr","value":"192.0.2.1"})");
  call("setTimeInt", {{"setTime", 1893456000}});
  call("getTime", {});
  EXPECT_EQ(records().at(1), "refused 6 Remote call setTimeInt(1893456000)");
  EXPECT_EQ(records().size(), 2U);
}

// Handles a call as RemoteServer and the loop do.
class MovedTelephone : public RecordedTelephone {
 protected:
  std::shared_ptr<KnownChannel> begin(const char* request) {
    auto channel = std::make_shared<KnownChannel>();
    const OriginScope origin(channel->origin());
    controller->handle({request, channel});
    return channel;
  }
  std::string now() {
    return instantText(
        std::chrono::duration_cast<std::chrono::seconds>(telephone.device().clock().wall()));
  }

  // A slice of the loop is far too short for it.
  static constexpr const char* kCentury =
      R"({"verb":"clock","action":"advance","seconds":3155760000})";

  LoopTasks tasks;
  HostFacts facts() {
    HostFacts known;
    known.later = [this](auto task) { tasks.add(std::move(task)); };
    return known;
  }
  std::optional<Controller> controller{std::in_place, telephone.device(), facts()};
};

TEST_F(MovedTelephone, RecordsHowFarAnAbandonedMoveWent) {
  telephone.device().clock().setSpeed(0);
  const auto channel = begin(kCentury);
  const auto waiting = begin(R"({"verb":"clock","action":"advance","seconds":60})");
  EXPECT_EQ(records(), Lines{});
  channel->isWanted = waiting->isWanted = false;
  tasks.runAll();
  EXPECT_NE(now(), "2016-06-16T00:00:00Z");
  EXPECT_EQ(
      records(),
      (Lines{"accepted 4 Clock advance 3155760000, from 2016-06-16T00:00:00Z, stopped at " + now(),
             "refused 4 Clock advance 60, from " + now()}));
}

// A time that is set meanwhile makes the move miss its landmark.
TEST_F(MovedTelephone, RecordsHowFarAMoveWentThatFailedAtItsEnd) {
  support::Part setter;
  setter.onTimer = [this](int) {
    call("setTime", {{"setTimeHours", 7}, {"setTimeMinutes", 0}, {"setTimeSeconds", 0}});
  };
  VirtualClock& clock = telephone.device().clock();
  clock.startTimer(clock.createTimer(setter, std::chrono::hours(1)));
  const auto channel = begin(R"({"verb":"clock","action":"to","landmark":"midnight"})");
  tasks.runAll();
  ASSERT_EQ(channel->replies.size(), 1U);
  EXPECT_NE(channel->replies[0].find("the clock has moved, but"), std::string::npos)
      << channel->replies[0];
  EXPECT_EQ(records().back(),
            "accepted 4 Clock to midnight, from 2016-06-16T00:00:00Z, stopped at " + now());
}

TEST_F(MovedTelephone, RecordsAMoveThatCannotBeginAsRefused) {
  begin(R"({"verb":"clock","action":"jump","seconds":2240524800})");
  telephone.device().clock().setSpeed(1);
  begin(R"({"verb":"clock","action":"to","landmark":"2038"})");
  const std::string text = records().back();
  EXPECT_EQ(text.find("refused 4 Clock to 2038, from 2040-12-31T"), 0U) << text;
  EXPECT_EQ(text.find("stopped"), std::string::npos) << text;
}

TEST_F(MovedTelephone, RecordsTheClientOfAMoveThatTheHostsEndStopped) {
  begin(kCentury);
  controller.reset();
  const auto records = log().list(0, 10);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_FALSE(records[0].failure);
  EXPECT_EQ(records[0].origin, "uid 1000, pid 4711");
}

// Refused requests do not displace the records of what a client did.
TEST_F(MovedTelephone, KeepsWhatAClientDidAndCountsWhatItTried) {
  const auto set = [this](const std::string& key, const char* value) {
    begin(Json{{"verb", "set"}, {"key", key}, {"value", value}}.dump().c_str());
  };
  set("date-format", "1");
  for (int i = 0; i < 1000; ++i) set("k" + std::to_string(i), "v");
  telephone.device().managementThread().run([] {});
  begin(R"({"verb":"clock","action":"jump","seconds":1893456000})");
  const auto records = log().list(0, 100);
  ASSERT_EQ(records.size(), 22U);
  EXPECT_EQ(records[0].text, "ClockSettings set data date-format(1)");
  EXPECT_EQ(records[20].text, "ClockSettings set data k999(v)");
  EXPECT_EQ(records[20].count, 981);
  EXPECT_EQ(records[21].text, "Clock jump 2030-01-01T00:00:00Z, from 2016-06-16T00:00:00Z");
  for (const SecurityRecord& record : records) EXPECT_EQ(record.origin, "uid 1000, pid 4711");
}

// The service's own record has no origin; the host adds it.
TEST_F(RecordedTelephone, NamesTheClientOfASet) {
  Controller controller(telephone.device(), {});
  const auto channel = std::make_shared<KnownChannel>();
  controller.handle({R"({"verb":"set","key":"date-format","value":"1"})", channel});
  controller.handle({R"({"verb":"reset"})", channel});
  telephone.device().managementThread().run([] {});
  const auto records = log().list(0, 10);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].text, "ClockSettings set data date-format(1)");
  EXPECT_EQ(records[0].eventCode, 3);
  EXPECT_EQ(records[1].text, "ClockSettings set data date-format(0)");
  for (const SecurityRecord& record : records) EXPECT_EQ(record.origin, "uid 1000, pid 4711");
}

// A text too short to be cut makes the service throw, which leaves no record of its own.
TEST_F(RecordedTelephone, RecordsASetAsRefusedWhenTheServiceThrows) {
  ask(R"({"verb":"set","key":"simple-time","value":"7"})");
  ask(R"({"verb":"set","key":"simple-time","value":"07:30"})");
  EXPECT_EQ(records(), (Lines{"refused 3 ClockSettings set data simple-time(7)",
                              "accepted 3 ClockSettings set data simple-time(07:30)"}));
}

TEST_F(RecordedTelephone, ListShowsRepeats) {
  for (int i = 0; i < 3; ++i) ask(R"({"verb":"set","key":"date-format","value":"1"})");
  const Json record = telephone.request({{"verb", "security-log"}}).at("records").at(0);
  EXPECT_EQ(record.at("count"), 3);
  EXPECT_EQ(record.at("last"), "2016-06-16T00:00:00Z");
  EXPECT_EQ(record.at("origin"), "");
  EXPECT_FALSE(record.contains("lost"));
}

// More records than the store keeps in memory; then its file is truncated.
TEST_F(RecordedTelephone, ListThatCannotBeReadIsRefused) {
  const std::string longest(SecurityLog::kLongestText, 'x');
  for (int i = 0; i < 1000; ++i) {
    log().record(1, 4, 1, 5, 3, false, std::to_string(i), longest, longest);
  }
  const auto file = telephone.device().options().state / SecurityLog::kFileName;
  std::filesystem::resize_file(file, 8192);
  const Json answer = telephone.request({{"verb", "security-log"}});
  EXPECT_EQ(answer, (Json{{"ok", false},
                          {"error", "store \"" + file.string() +
                                        "\": reading failed: database disk image is malformed"}}));
}

TEST(SecurityLogDocument, StatesTheBounds) {
  const std::string document = support::contentOf(SECURITY_LOG_DOCUMENT);
  for (const std::string& bound : {std::to_string(SecurityLog::kSets) + " accepted management",
                                   std::to_string(SecurityLog::kHostActs) + " other accepted",
                                   std::to_string(SecurityLog::kRefused) + " refused",
                                   std::to_string(SecurityLog::kLongestText) + " bytes",
                                   "first " + std::to_string(Repeats::kOwnRecords),
                                   std::to_string(Repeats::kIdle.count()) + " seconds",
                                   std::to_string(Repeats::kRuns) + " runs"}) {
    EXPECT_NE(document.find(bound), std::string::npos) << bound;
  }
}

}  // namespace
}  // namespace host
