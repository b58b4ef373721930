#include "operator/Controller.h"

#include <gtest/gtest.h>

#include <future>
#include <nlohmann/json.hpp>
#include <optional>

#include "RecordingAgent.h"
#include "clock/VirtualClock.h"
#include "framework/DataAccess.h"
#include "framework/FailedLookups.h"
#include "host/operator/RecordingChannel.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/SecurityLog.h"

namespace host {
namespace {

// A telephone with the built plug-in, powered on.
class ControlledTelephone : public ::testing::Test {
 protected:
  Json ask(const char* request) { return telephone.request(Json::parse(request)); }

  std::string errorOf(const char* request) {
    const Json answer = ask(request);
    EXPECT_EQ(answer.at("ok"), false) << request;
    return answer.value("error", std::string());
  }

  Plugin plugin{CLOCK_PLUGIN};
  ScenarioDevice telephone{plugin, {}};
};

TEST_F(ControlledTelephone, RefusesIncompleteRequests) {
  const std::pair<const char*, const char*> wrong[] = {
      {"{}", "string member \"verb\""},
      {R"({"verb":5})", "string member \"verb\""},
      {R"({"verb":"gett"})", "did you mean \"get\"?"},
      {R"({"verb":"call"})", "unknown verb \"call\""},
      {R"({"verb":"get"})", "string member \"key\""},
      {R"({"verb":"get","key":5})", "string member \"key\""},
      {R"({"verb":"set","key":"time"})", "string member \"value\""},
      {R"({"verb":"clock"})", "string member \"action\""},
      {R"({"verb":"clock","action":"fly"})", "no action \"fly\""},
      {R"({"verb":"clock","action":"speed","speed":"-1"})", "is not a speed"},
      {R"({"verb":"clock","action":"speed","speed":1})", "string member \"speed\""},
      {R"({"verb":"clock","action":"advance"})", "\"seconds\" that is a number"},
      {R"({"verb":"clock","action":"advance","seconds":"5"})", "\"seconds\" that is a number"},
      {R"({"verb":"clock","action":"advance","seconds":true})", "\"seconds\" that is a number"},
      {R"({"verb":"clock","action":"advance","seconds":1.5})", "\"seconds\" that is a number"},
      {R"({"verb":"clock","action":"advance","seconds":-1})", "0 to 3155760000"},
      {R"({"verb":"clock","action":"advance","seconds":3155760001})", "0 to 3155760000"},
      {R"({"verb":"clock","action":"advance","seconds":18446744073709551615})", "0 to 3155760000"},
      {R"({"verb":"clock","action":"jump","seconds":7258118400})", "0 to 7258118399"},
      {R"({"verb":"clock","action":"jump"})", "\"seconds\" that is a number"},
      {R"({"verb":"clock","action":"jump","local":5})", "string member \"local\""},
      {R"({"verb":"clock","action":"jump","local":"noon"})",
       "\"noon\" is not a local time; write `2026-03-08 01:59:50`"},
      {R"({"verb":"clock","action":"to","landmark":"noon"})",
       "unknown landmark \"noon\"; write hour, midnight, dst, leap-day or 2038"},
      {R"({"verb":"inject"})", "string member \"what\""},
      {R"({"verb":"inject","what":"rain"})", "\"rain\" cannot be injected"},
      {R"({"verb":"inject","what":"jack","plug":5})", "\"status\" that is a number"},
      {R"({"verb":"inject","what":"jack","plug":2147483648,"status":1})", "to 2147483647"},
      {R"({"verb":"inject","what":"value","key":"k"})", "string member \"value\""},
      {R"({"verb":"inject","what":"user-data","value":"on"})", "string member \"key\""},
      {R"({"verb":"inject","what":"user-data","key":"k","value":"yes"})",
       "\"yes\" is not on or off"},
      {R"({"verb":"history","count":0})", "\"count\" that is a number, 1 to 1000"},
      {R"({"verb":"history","count":1001})", "\"count\" that is a number, 1 to 1000"},
      {R"({"verb":"upcoming","count":1001})", "\"count\" that is a number, 1 to 1000"},
      {R"({"verb":"upcoming","until":-1})", "\"until\" that is a number"},
      {R"({"verb":"upcoming","until":5})",
       "which is not before 1970-01-01T00:00:05Z; write a later"},
      {R"({"verb":"log","level":7})", "\"level\" that is a number, 0 to 6"},
      {R"({"verb":"log-level","level":7})", "\"level\" that is a number, 0 to 6"},
      {R"({"verb":"log-level","level":"5"})", "\"level\" that is a number, 0 to 6"},
      {R"({"verb":"security-log","after":"5"})", "\"after\" that is a number"},
      {R"({"verb":"security-log","after":-1})", "\"after\" that is a number"},
  };
  for (const auto& [request, part] : wrong) {
    const std::string error = errorOf(request);
    EXPECT_NE(error.find(part), std::string::npos) << request << " -> " << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << request;
  }
}

TEST_F(ControlledTelephone, ClipsALongNameInTheError) {
  const std::string place(70'000, 'a');
  const std::string request = R"({"verb":"clock","action":"to","landmark":")" + place + R"("})";
  const std::string error = errorOf(request.c_str());
  EXPECT_LT(error.size(), 200U) << error;
  EXPECT_NE(error.find("...\" (70000 bytes)"), std::string::npos) << error;
}

// Copying a deep member, or writing it out again, would take more stack than there is.
TEST_F(ControlledTelephone, RefusesInvalidJsonInOneLine) {
  Controller controller(telephone.device(), {});
  constexpr std::size_t kDepth = 500'000;
  const std::string deep = std::string(kDepth, '[') + std::string(kDepth, ']');
  const std::pair<std::string, std::string> wrong[] = {
      {"get time", "not a JSON object"},
      {"{\"verb\":\"\xff\"}", "not a JSON object"},
      {R"({"verb":"status","verb":"reset"})", "holds \\\"verb\\\" twice"},
      {R"({"verb":"log","follow":)" + deep + "}", "nested more than 32 deep"}};
  for (const auto& [text, part] : wrong) {
    const auto channel = std::make_shared<RecordingChannel>();
    controller.handle({text, channel});
    ASSERT_EQ(channel->replies.size(), 1U);
    EXPECT_NE(channel->replies[0].find(part), std::string::npos) << channel->replies[0];
  }
}

TEST_F(ControlledTelephone, SkipsRequestsOfDisconnectedClients) {
  Controller controller(telephone.device(), {});
  const auto channel = std::make_shared<RecordingChannel>();
  channel->isWanted = false;
  controller.handle({R"({"verb":"set","key":"date-format","value":"2"})", channel});
  controller.handle({R"({"verb":"inject","what":"value","key":"k","value":"v"})", channel});
  EXPECT_EQ(controller.perform({{"verb", "get"}, {"key", "date-format"}}).at("value"), "0");
  EXPECT_FALSE(telephone.device().management().value("k"));
}

TEST_F(ControlledTelephone, AnswersAnInjectAfterItsObservers) {
  Device& device = telephone.device();
  Controller controller(device, {});
  const std::pair<const char*, const char*> injects[] = {
      {"interface-status", R"({"verb":"inject","what":"network","value":"down"})"},
      {"dhcp-enabled", R"({"verb":"inject","what":"dhcp","value":"true"})"},
      {"mobility-user-data-update", R"({"verb":"inject","what":"mobility","value":"user"})"},
      {"any", R"({"verb":"inject","what":"value","key":"any","value":"x"})"},
  };
  for (const auto& [key, request] : injects) {
    const auto client = std::make_shared<RecordingChannel>();
    conformance::RecordingAgent observer;
    observer.onChange = [&](ManageableData&) { EXPECT_TRUE(client->replies.empty()); };
    device.managementThread().run(
        [&, name = key] { device.management().observeData(name, &observer); });
    std::promise<void> gate;
    device.managementThread().post([opened = gate.get_future().share()] { opened.wait(); });
    controller.handle({request, client});
    EXPECT_TRUE(client->replies.empty()) << "answered too early";
    gate.set_value();
    for (int i = 0; i < 3; ++i) device.managementThread().run([] {});
    EXPECT_EQ(observer.takeNotes().size(), 1U) << key;
    EXPECT_EQ(client->replies.size(), 1U) << key;
    device.managementThread().run([&] { device.management().dropAgents(); });
  }
}

// Records what is stored and recorded when the client is answered.
struct AnsweredWith : RecordingChannel {
  explicit AnsweredWith(Device& telephone) : device(telephone) {}
  bool reply(std::string_view json) override {
    stored = device.store().getItem("ClockSettings", "DateFormat").value_or("");
    records = device.securityLog().kept().records;
    return RecordingChannel::reply(json);
  }

  Device& device;
  std::string stored;
  std::int64_t records = 0;
};

TEST_F(ControlledTelephone, AnswersASetAfterItIsStoredAndRecorded) {
  Controller controller(telephone.device(), {});
  const auto client = std::make_shared<AnsweredWith>(telephone.device());
  controller.handle({R"({"verb":"set","key":"date-format","value":"2"})", client});
  telephone.device().managementThread().run([] {});
  EXPECT_EQ(client->replies, (std::vector<std::string>{R"({"ok":true})"}));
  EXPECT_EQ(client->stored, "2");
  EXPECT_EQ(client->records, 1);
}

TEST_F(ControlledTelephone, LooksUpFailedNamesAgainAfterANetworkChange) {
  const FailedLookups::Instant now = std::chrono::steady_clock::now();
  failedLookups().forgetAll();
  ASSERT_TRUE(failedLookups().add("time.example", now));
  failedLookups().setUnanswered("time.example");
  EXPECT_EQ(ask(R"({"verb":"inject","what":"network","value":"down"})").at("ok"), true);
  EXPECT_FALSE(failedLookups().holds("time.example", now));
  EXPECT_TRUE(failedLookups().isSilent(now))
      << "otherwise a client could make the host wait each time";
  failedLookups().forgetAll();
}

TEST_F(ControlledTelephone, ValuesMayHoldAnyCharacter) {
  EXPECT_EQ(ask(R"({"verb":"set","key":"ntp-secret","value":"a\"<&>\n"})").at("ok"), true);
  EXPECT_EQ(ask(R"({"verb":"get","key":"ntp-secret"})").at("value"), "a\"<&>\n");
}

TEST_F(ControlledTelephone, ChangesWhatIsShownOfTheLog) {
  EXPECT_EQ(ask(R"({"verb":"log-level"})"), (Json{{"ok", true}, {"level", 5}}));
  EXPECT_EQ(ask(R"({"verb":"log-level","level":2})"),
            (Json{{"ok", true}, {"level", 2}, {"before", 5}}));
  EXPECT_EQ(ask(R"({"verb":"status"})").at("logLevel"), 2);
  EXPECT_EQ(ask(R"({"verb":"log-level"})").at("level"), 2);
}

TEST_F(ControlledTelephone, AnswersEveryVerbOfTheHost) {
  for (const char* const verb : {"keys", "status", "history", "upcoming", "log", "security-log"}) {
    const Json answer = telephone.request({{"verb", verb}});
    EXPECT_EQ(answer.at("ok"), true) << verb;
  }
  const Json status = telephone.request({{"verb", "status"}});
  EXPECT_EQ(status.at("network"), "down");
  EXPECT_EQ(status.at("variant"), 0);
}

}  // namespace
}  // namespace host
