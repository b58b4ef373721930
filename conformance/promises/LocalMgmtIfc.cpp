#include "LocalMgmtIfc.h"

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Promise.h"
#include "RecordingAgent.h"

namespace {

using conformance::RecordingAgent;
using conformance::recordOf;
using Notes = std::vector<std::string>;

class LocalMgmtIfcPromise : public conformance::Promise {
 protected:
  LocalMgmtIfc& management() { return service<LocalMgmtIfc>("LocalMgmtIfc"); }
  // What the agents were told, once all changes are delivered.
  Notes notesOf(RecordingAgent& agent) {
    platform().settle();
    return agent.takeNotes();
  }

  RecordingAgent m_agent;
  RecordingAgent m_other;
};

TEST_F(LocalMgmtIfcPromise, ReachesTheAgent) {
  promises("Makes `agent` reachable for management under `agentId`");
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
  EXPECT_EQ(platform().managed("date-format"), "value of date-format");
  EXPECT_TRUE(platform().manage("ntp-secret", "a b"));
  EXPECT_TRUE(platform().resetUserData());
  EXPECT_EQ(notesOf(m_agent), (Notes{"get date-format", "set ntp-secret=a b", "reset"}));
}

TEST_F(LocalMgmtIfcPromise, PassesTheAgentsRefusalOn) {
  promises("Makes `agent` reachable for management under `agentId`");
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
  m_agent.answer = [] { return false; };
  EXPECT_EQ(platform().managed("date-format"), std::nullopt);
  EXPECT_FALSE(platform().manage("date-format", "1"));
  EXPECT_FALSE(platform().resetUserData());
}

TEST_F(LocalMgmtIfcPromise, ALaterAgentReplacesIt) {
  promises("until another agent replaces it or the service is unloaded.");
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_other));
  EXPECT_TRUE(platform().manage("date-format", "1"));
  EXPECT_EQ(notesOf(m_agent), Notes{});
  EXPECT_EQ(notesOf(m_other), Notes{"set date-format=1"});
}

TEST_F(LocalMgmtIfcPromise, AnAgentOfAnotherIdDoesNotReplaceIt) {
  promises("reachable for management under `agentId`, until another agent replaces it");
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
  EXPECT_TRUE(management().registerAgent("OtherMgmtId", &m_other));
  EXPECT_TRUE(platform().manage("date-format", "1"));
  EXPECT_EQ(notesOf(m_agent), Notes{"set date-format=1"});
  EXPECT_EQ(notesOf(m_other), Notes{});
}

TEST_F(LocalMgmtIfcPromise, TheAgentIsGoneWhenItsServiceIsUnloaded) {
  promises("until another agent replaces it or the service is unloaded.");
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
  EXPECT_TRUE(management().observeData("dhcp-enabled", &m_agent));
  platform().dropService();
  EXPECT_FALSE(platform().manage("date-format", "1"));
  platform().setDeviceValue("dhcp-enabled", "true");
  EXPECT_EQ(notesOf(m_agent), Notes{});
}

TEST_F(LocalMgmtIfcPromise, ReadsADeviceValueIntoTheRecord) {
  promises("Reads the record's root (\"mac-addr\", \"interface-status\", ...) into the record.");
  platform().setDeviceValue("mac-addr", "0001E3A1B2C3");
  ManageableData record = recordOf("mac-addr");
  ASSERT_TRUE(management().getData(record));
  std::string value;
  EXPECT_TRUE(record.interogate("mac-addr", value));
  EXPECT_EQ(value, "0001E3A1B2C3");
}

TEST_F(LocalMgmtIfcPromise, HasNoOtherDeviceValues) {
  promises("False if the device holds no such value.");
  ManageableData record = recordOf("no-such-value");
  EXPECT_FALSE(management().getData(record));
}

TEST_F(LocalMgmtIfcPromise, WritesADeviceValue) {
  promises("Writes the record's value of its root.");
  ManageableData record = recordOf("last-restart-date", "2016-06-16T00:00:00+00:00");
  EXPECT_TRUE(management().setData(record));
  EXPECT_EQ(platform().deviceValue("last-restart-date"), "2016-06-16T00:00:00+00:00");
}

TEST_F(LocalMgmtIfcPromise, RefusesToWriteNothing) {
  promises("False when it was refused, as without root or value.");
  ManageableData rootless;
  ManageableData empty = recordOf("last-restart-date");
  EXPECT_FALSE(management().setData(rootless));
  EXPECT_FALSE(management().setData(empty));
  EXPECT_EQ(platform().deviceValue("last-restart-date"), std::nullopt);
}

TEST_F(LocalMgmtIfcPromise, ObserversHearOfEachChangeOfTheirKey) {
  promises("From now on each change of `key` calls agent->manageableDataChanged.");
  platform().setDeviceValue("dhcp-enabled", "before");
  platform().settle();
  for (const char* const key : {"dhcp-enabled", "interface-status"})
    EXPECT_TRUE(management().observeData(key, &m_agent));
  EXPECT_TRUE(management().observeData("dhcp-enabled", &m_other));
  platform().setDeviceValue("dhcp-enabled", "true");
  platform().setDeviceValue("interface-status", "up");
  platform().setDeviceValue("mac-addr", "0001E3A1B2C3");
  platform().setDeviceValue("dhcp-enabled", "false");
  EXPECT_EQ(notesOf(m_agent), (Notes{"changed dhcp-enabled=true", "changed interface-status=up",
                                     "changed dhcp-enabled=false"}));
  EXPECT_EQ(notesOf(m_other), (Notes{"changed dhcp-enabled=true", "changed dhcp-enabled=false"}));
}

// The clock holds its management lock meanwhile: a callback would wait for it for ever.
TEST_F(LocalMgmtIfcPromise, NoOperationCallsBack) {
  promises("no operation calls back into an agent before it returns");
  EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
  EXPECT_TRUE(management().observeData("dhcp-enabled", &m_agent));
  std::vector<std::string> during;
  m_agent.answer = [&] {
    m_agent.takeNotes();
    ManageableData record = recordOf("dhcp-enabled", "true");
    EXPECT_TRUE(management().setData(record));
    EXPECT_TRUE(management().reportDataChanged(record));
    EXPECT_TRUE(management().getData(record));
    EXPECT_TRUE(management().observeData("interface-status", &m_agent));
    management().isUserData(record, 0);
    management().setItemState(record, 0);
    EXPECT_TRUE(management().registerAgent("ClockMgmtId", &m_agent));
    during = m_agent.takeNotes();
    return true;
  };
  EXPECT_TRUE(platform().manage("date-format", "1"));
  EXPECT_EQ(during, Notes{});
  EXPECT_EQ(notesOf(m_agent), Notes{"changed dhcp-enabled=true"});
}

TEST_F(LocalMgmtIfcPromise, AgentsReportChanges) {
  promises("An agent's report of a change: the record's root now has the record's value.");
  ManageableData date = recordOf("date-format", "2");
  ManageableData time = recordOf("time-format", "1");
  EXPECT_TRUE(management().reportDataChanged(date));
  EXPECT_TRUE(management().reportDataChanged(time));
  const std::vector<std::pair<std::string, std::string>> both{{"date-format", "2"},
                                                              {"time-format", "1"}};
  EXPECT_EQ(platform().reports(), both);
}

TEST_F(LocalMgmtIfcPromise, KnowsWhatIsUserData) {
  promises("true when the item that the record's root names may be reset to its default");
  platform().setUserData("date-format", false);
  platform().setUserData("time-format", true);
  ManageableData date = recordOf("date-format");
  ManageableData time = recordOf("time-format");
  EXPECT_FALSE(management().isUserData(date, 0));
  EXPECT_TRUE(management().isUserData(time, 0));
}

TEST_F(LocalMgmtIfcPromise, KeepsTheItemStates) {
  promises("sets the access to the record's root. 0: settable. 4: set by the device itself");
  ManageableData record = recordOf("time");
  management().setItemState(record, 4);
  EXPECT_EQ(platform().itemState("time"), 4);
  EXPECT_EQ(platform().itemState("simple-time"), 0);
  management().setItemState(record, 0);
  EXPECT_EQ(platform().itemState("time"), 0);
}

TEST_F(LocalMgmtIfcPromise, AnyThreadMayCall) {
  promises("Thread: any; no operation calls back");
  LocalMgmtIfc& shared = management();
  const auto useWith = [&](const std::string& name) {
    for (int i = 0; i < 500; ++i) {
      ManageableData record = recordOf(name + std::to_string(i), "x");
      EXPECT_TRUE(shared.setData(record));
      EXPECT_TRUE(shared.getData(record));
      shared.setItemState(record, 4);
    }
  };
  std::thread other(useWith, "a");
  useWith("b");
  other.join();
  for (const char* const key : {"a0", "a499", "b0", "b499"}) {
    EXPECT_EQ(platform().deviceValue(key), "x") << key;
    EXPECT_EQ(platform().itemState(key), 4) << key;
  }
}

}  // namespace
