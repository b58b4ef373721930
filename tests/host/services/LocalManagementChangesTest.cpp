#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ManageableData.h"
#include "RecordingAgent.h"
#include "services/LocalManagement.h"
#include "support/LogCapture.h"

namespace host {
namespace {

TEST(DeviceValueChanges, NotifyOtherObserversWhenOneThrows) {
  const support::LogCapture log;
  LocalManagement management;
  conformance::RecordingAgent first;
  conformance::RecordingAgent second;
  first.onChange = [](ManageableData&) { throw std::runtime_error("no"); };
  EXPECT_TRUE(management.observeData("dhcp-enabled", &first));
  EXPECT_TRUE(management.observeData("dhcp-enabled", &second));
  management.setValue("dhcp-enabled", "true");
  EXPECT_EQ(second.takeNotes().size(), 1U);
  EXPECT_TRUE(log.has(2, "change of \"dhcp-enabled\" refused: the service threw \"no\""));
}

TEST(DeviceValueChanges, ByAnAgentNotifyObserversAfterItsCall) {
  LocalManagement management;
  conformance::RecordingAgent agent;
  EXPECT_TRUE(management.observeData("interface-status", &agent));
  ManageableData data = conformance::recordOf("interface-status", "up");
  EXPECT_TRUE(management.setData(data));
  EXPECT_TRUE(agent.takeNotes().empty());
  management.deliverChanges();
  EXPECT_EQ(agent.takeNotes(), std::vector<std::string>{"changed interface-status=up"});
}

TEST(DeviceValueChanges, ByAnObserverFollowTheChangeThatItHandles) {
  LocalManagement management;
  conformance::RecordingAgent agent;
  EXPECT_TRUE(management.observeData("dhcp-enabled", &agent));
  EXPECT_TRUE(management.observeData("interface-status", &agent));
  agent.onChange = [&](ManageableData& change) {
    if (change.getRootId() == "interface-status") return;
    ManageableData data = conformance::recordOf("interface-status", "down");
    EXPECT_TRUE(management.setData(data));
    agent.note("end of the first");
  };
  management.setValue("dhcp-enabled", "true");
  EXPECT_EQ(agent.takeNotes(),
            (std::vector<std::string>{"changed dhcp-enabled=true", "end of the first",
                                      "changed interface-status=down"}));
}

class DispatchedChanges : public ::testing::Test {
 protected:
  void runTasks() {
    for (const auto& task : tasks) task();
  }

  std::vector<std::function<void()>> tasks;
  LocalManagement management{
      [this](std::function<void()> task) { tasks.push_back(std::move(task)); }};
  conformance::RecordingAgent agent;
};

TEST_F(DispatchedChanges, NotifyObserversInTheDispatchedTask) {
  EXPECT_TRUE(management.observeData("dhcp-enabled", &agent));
  management.setValue("dhcp-enabled", "true");
  EXPECT_TRUE(agent.takeNotes().empty());
  ASSERT_EQ(tasks.size(), 1U);
  runTasks();
  EXPECT_EQ(agent.takeNotes().size(), 1U);
}

TEST_F(DispatchedChanges, DoNotNotifyALaterObserver) {
  management.setValue("interface-status", "up");
  EXPECT_TRUE(management.observeData("interface-status", &agent));
  runTasks();
  management.deliverChanges();
  EXPECT_TRUE(agent.takeNotes().empty());
}

TEST_F(DispatchedChanges, DoNotNotifyADroppedObserver) {
  EXPECT_TRUE(management.observeData("dhcp-enabled", &agent));
  management.setValue("dhcp-enabled", "true");
  management.dropAgents();
  runTasks();
  EXPECT_TRUE(agent.takeNotes().empty());
}

}  // namespace
}  // namespace host
