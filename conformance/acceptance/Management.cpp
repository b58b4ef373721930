// The sixteen keys of the management, and remote observers through the platform's own calls.
#include <memory>

#include "MethodText.h"
#include "acceptance/Acceptance.h"

namespace {

using conformance::instantOf;
using conformance::setClock;
using conformance::textOf;
using std::chrono::hours;
using std::chrono::milliseconds;

struct KeyRow {
  const char* key;
  const char* set;
  const char* get;  // after that
};

constexpr const char* kZoneId = "daylight-save-zone-id";

// In an order in which each can be set: a set of the clock by hand comes before a time server.
const KeyRow kKeys[] = {
    {"date-format", "1", "1"},
    {"time-format", "1", "1"},
    {"sntp-tz-offset", "-5", "-5"},
    {"daylight-save", "false", "false"},
    {"daylight-save-minutes", "30", "30"},
    {"auto-daylight-save", "false", "false"},
    {kZoneId, "12", "12"},
    {"daylight-save-zone-index", "9", "9"},  // the same setting
    {"time-source", "2", "2"},
    {"simple-date", "2028-02-29", "2028-02-29"},
    {"simple-time", "07:30", "07:30"},
    {"time", "2028-03-01T12:00:00+00:00", "2028-03-01T"},
    {"ntp-secret", "a <secret> & more", "a <secret> & more"},
    {"sntp-addr", "192.0.2.1", "192.0.2.1"},
};

class ManagementAcceptance : public conformance::Acceptance {
 protected:
  std::string managed(const char* key) { return platform().managed(key).value_or("(refused)"); }
};

TEST_F(ManagementAcceptance, EachKeyIsSetAndRead) {
  telephone();
  for (const KeyRow& row : kKeys) {
    EXPECT_TRUE(platform().manage(row.key, row.set)) << row.key;
    pass(milliseconds{1});
    EXPECT_EQ(managed(row.key).substr(0, std::string(row.get).size()), row.get) << row.key;
  }
  EXPECT_EQ(managed(kZoneId), "9");
}

TEST_F(ManagementAcceptance, TwoKeysAreReadOnly) {
  telephone();
  manage({{"daylight-save-zone-id", "12"}});
  EXPECT_EQ(managed("daylight-save-zone-text"), "United States");
  EXPECT_NE(managed("daylight-save-zone-list").find("United States;"), std::string::npos);
  for (const char* const key : {"daylight-save-zone-text", "daylight-save-zone-list"})
    EXPECT_FALSE(platform().manage(key, "x")) << key;
  EXPECT_EQ(managed("no-such-key"), "(refused)");
  EXPECT_FALSE(platform().manage("no-such-key", "x"));
}

TEST_F(ManagementAcceptance, TheSettingsSurviveARestart) {
  telephone();
  for (const KeyRow& row : kKeys) EXPECT_TRUE(platform().manage(row.key, row.set)) << row.key;
  pass(milliseconds{1});
  telephone().restart();
  for (const KeyRow& row : kKeys) {
    const std::string key = row.key;
    if (key == "time" || key == "simple-time" || key == "simple-date") continue;
    EXPECT_EQ(managed(row.key), key == kZoneId ? "9" : row.get) << row.key;
  }
}

TEST_F(ManagementAcceptance, ARefusedSettingIsNotUsed) {
  telephone();
  manage({{"date-format", "1"}});
  platform().refuseSettings(true);
  EXPECT_FALSE(platform().manage("date-format", "2"));
  platform().refuseSettings(false);
  EXPECT_EQ(managed("date-format"), "1");
}

TEST_F(ManagementAcceptance, EachSetIsInTheSecurityLog) {
  telephone();
  EXPECT_TRUE(platform().manage("date-format", "1"));
  EXPECT_FALSE(platform().manage("daylight-save", "perhaps"));
  const auto records = platform().securityRecords();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_FALSE(records[0].failure);
  EXPECT_TRUE(records[1].failure);
  EXPECT_NE(records[1].text.find("daylight-save"), std::string::npos) << records[1].text;
}

TEST_F(ManagementAcceptance, ATimeServerMakesTheTimeReadOnly) {
  telephone();
  manage({{"sntp-addr", "192.0.2.1"}});
  EXPECT_EQ(platform().itemState("time"), 4);
  manage({{"sntp-addr", "0.0.0.0"}});
  EXPECT_EQ(platform().itemState("time"), 0);
}

TEST_F(ManagementAcceptance, UserDataIsResetAndReported) {
  telephone();
  const std::string before = managed("date-format");
  const char* const other = before == "1" ? "0" : "1";
  manage({{"date-format", other}});
  platform().setUserData("date-format", true);
  platform().setUserData("time-format", false);
  EXPECT_TRUE(platform().resetUserData());
  EXPECT_EQ(managed("date-format"), before);
  const auto reports = platform().reports();
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.back(), (std::pair<std::string, std::string>("date-format", before)));
}

// A client in another process, through the platform's codecs, proxies and connections.
class RemoteAcceptance : public conformance::Acceptance {
 protected:
  void serve() {
    m_invoker.reset(telephone().plugin().makeInvoker());
    m_invoker->initInvoker(&platform().remote());
    platform().serve(telephone().service(), *m_invoker, telephone().plugin().makeProxy);
  }
  std::string call(int client, Method request) {
    const auto reply = platform().call(client, request);
    return reply ? textOf(*reply) : "none";
  }

 private:
  std::unique_ptr<Invoker> m_invoker;  // outlives the platform
};

TEST_F(RemoteAcceptance, AClientCallsAndObserves) {
  serve();
  manage({{"time-format", "0"}, {"daylight-save", "false"}, {"sntp-tz-offset", "0"}});
  setClock(instantOf("2026-01-01T10:59:59"));
  manage({{"sntp-tz-offset", "1"}});  // the timers are set again
  const int client = platform().connect();
  const int other = platform().connect();
  EXPECT_EQ(call(client, Method("getTime", Method::call)),
            "reply getTime ->getTimeStringReturn='11:59'");
  for (const int observer : {client, other}) {
    EXPECT_EQ(call(observer, Method("observeTimeEvents", Method::call)),
              "reply observeTimeEvents ->observeTimeEventsReturn=true");
  }
  pass(milliseconds{1000});
  const auto events = platform().events(client);
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(textOf(events[0]),
            "call timeChangeEvent timeChangeEventHours=12 timeChangeEventMinutes=0 "
            "timeChangeEventSeconds=0");
  platform().disconnect(other);
  pass(hours{1});
  EXPECT_EQ(platform().events(client).size(), 1U);
}

}  // namespace
