#include "services/LocalManagement.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "ManageableData.h"
#include "RecordingAgent.h"
#include "support/LogCapture.h"

namespace host {
namespace {

class ClockAgentRegistered : public ::testing::Test {
 protected:
  ClockAgentRegistered() { EXPECT_TRUE(management.registerAgent("ClockMgmtId", &agent)); }

  support::LogCapture log;
  LocalManagement management;
  conformance::RecordingAgent agent;
};

TEST_F(ClockAgentRegistered, RefusedGetLeavesTheValueUntouched) {
  agent.answer = [] { return false; };
  std::string value = "as before";
  EXPECT_FALSE(management.get("no-such-key", value));
  EXPECT_EQ(value, "as before");
}

TEST_F(ClockAgentRegistered, SetPassesKeyAndValueAndReturnsTheAnswer) {
  EXPECT_TRUE(management.set("ntp-secret", std::string("a\0b", 3)));
  agent.answer = [] { return false; };
  EXPECT_FALSE(management.set("ntp-secret", ""));
  EXPECT_EQ(agent.takeNotes(),
            (std::vector<std::string>{std::string("set ntp-secret=a\0b", 18), "set ntp-secret="}));
}

TEST_F(ClockAgentRegistered, ExceptionOfTheAgentIsARefusalWithOneErrorLine) {
  agent.answer = []() -> bool { throw std::out_of_range("basic_string::substr"); };
  std::string value;
  EXPECT_FALSE(management.set("simple-time", "7"));
  EXPECT_FALSE(management.get("simple-time", value));
  EXPECT_FALSE(management.reset());
  EXPECT_TRUE(log.has(2,
                      "set of \"simple-time\" refused: the service threw "
                      "\"basic_string::substr\""));
  EXPECT_EQ(log.entries().size(), 3U);
  agent.answer = [] { return true; };
  EXPECT_TRUE(management.set("simple-time", "07:30"));
}

TEST_F(ClockAgentRegistered, OnlyASetThatThrowsIsReportedAsThrown) {
  std::vector<std::string> thrown;
  management.onThrownSet([&](const std::string& key, const std::string& value) {
    thrown.push_back(key + '=' + value);
  });
  for (const bool answer : {true, false}) {
    agent.answer = [answer] { return answer; };
    EXPECT_EQ(management.set("simple-time", "07:30"), answer);
  }
  agent.answer = []() -> bool { throw 7; };
  std::string value;
  EXPECT_FALSE(management.get("simple-time", value));
  EXPECT_EQ(thrown, std::vector<std::string>{});
  EXPECT_FALSE(management.set("simple-time", "7"));
  EXPECT_EQ(thrown, std::vector<std::string>{"simple-time=7"});
  EXPECT_TRUE(log.has(2, "set of \"simple-time\" refused: the service threw"));
}

TEST_F(ClockAgentRegistered, NullAgentIsRefused) {
  EXPECT_FALSE(management.registerAgent("ClockMgmtId", nullptr));
  EXPECT_FALSE(management.observeData("dhcp-enabled", nullptr));
  EXPECT_TRUE(management.reset());
}

TEST(LocalManagement, ReportWithoutRootOrValueIsRefused) {
  LocalManagement management;
  ManageableData rootless;
  ManageableData empty = conformance::recordOf("last-restart-date");
  management.onReport([](const auto& key, const auto&) { ADD_FAILURE() << key; });
  EXPECT_FALSE(management.reportDataChanged(rootless));
  EXPECT_FALSE(management.reportDataChanged(empty));
}

TEST(LocalManagement, ItemIsUserDataByDefault) {
  LocalManagement management;
  ManageableData data = conformance::recordOf("date-format");
  EXPECT_TRUE(management.isUserData(data, 0));
  management.setUserData("date-format", false);
  EXPECT_FALSE(management.isUserData(data, 0));
}

TEST(LocalManagement, ReportsAreLoggedAndPassedToTheListener) {
  const support::LogCapture log(4);
  LocalManagement management;
  std::vector<std::string> reports;
  management.onReport([&](const std::string& key, const std::string& value) {
    reports.push_back(key + "=" + value);
  });
  ManageableData data = conformance::recordOf("date-format", "2");
  EXPECT_TRUE(management.reportDataChanged(data));
  EXPECT_EQ(reports, std::vector<std::string>{"date-format=2"});
  EXPECT_TRUE(log.has(4, "change reported: \"date-format\" is \"2\"")) << log.text();
  EXPECT_FALSE(management.value("date-format").has_value());
}

// Each thread has its own items; without the lock, concurrent changes lose some of them.
TEST(LocalManagement, IsThreadSafe) {
  const support::LogCapture log(0);
  LocalManagement management;
  conformance::RecordingAgent agent;
  const auto useWith = [&](char thread) {
    for (int i = 1; i <= 3000; ++i) {
      const std::string key = thread + std::to_string(i);
      ManageableData data = conformance::recordOf(key, "x");
      EXPECT_TRUE(management.registerAgent(key, &agent));
      management.setItemState(data, i);
      management.setValue(key, "x");
      management.setUserData(key, false);
      EXPECT_EQ(management.itemState(key), i);
      EXPECT_EQ(management.value(key), "x");
      EXPECT_FALSE(management.isUserData(data, 0));
      management.onReport([key](const auto&, const auto&) {});
      EXPECT_TRUE(management.reportDataChanged(data));
    }
  };
  std::thread other(useWith, 'a');
  useWith('b');
  other.join();
}

}  // namespace
}  // namespace host
