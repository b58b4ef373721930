// Every management set leaves a record in the security log, accepted or not.

#include <gmock/gmock.h>

#include "ManageableData.h"
#include "plugin/ManagedClock.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ClockWithSecurityLog = plugin::ManagedClock;

TEST_F(ClockWithSecurityLog, GetsTheTimeTheFixedNumbersAndTheText) {
  EXPECT_TRUE(telephone.manage("date-format", "2"));
  const auto records = telephone.security.records();
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].time, 1'709'629'625);
  EXPECT_EQ(records[0].facility, 4);
  EXPECT_EQ(records[0].severity, 1);
  EXPECT_EQ(records[0].eventClass, 5);
  EXPECT_EQ(records[0].eventCode, 3);
  EXPECT_FALSE(records[0].failure);
  EXPECT_EQ(records[0].text, "ClockSettings set data date-format(2)");
  EXPECT_EQ(records[0].subject, "");
  EXPECT_EQ(records[0].origin, "");
}

TEST_F(ClockWithSecurityLog, GetsOneRecordForEachAttempt) {
  telephone.manage("daylight-save", "true");
  telephone.manage("daylight-save", "yes");
  telephone.manage("daylight-save-zone-text", "Canada");
  telephone.manage("no-such-key", "");
  telephone.manage("ntp-secret", "in clear (as told)");
  EXPECT_THAT(telephone.security.lines(),
              ElementsAre("accepted ClockSettings set data daylight-save(true)",
                          "refused ClockSettings set data daylight-save(yes)",
                          "refused ClockSettings set data daylight-save-zone-text(Canada)",
                          "refused ClockSettings set data no-such-key()",
                          "accepted ClockSettings set data ntp-secret(in clear (as told))"));
}

TEST_F(ClockWithSecurityLog, GetsTheFailureOfTheStoreUnderEachKeyThatIsStored) {
  const std::pair<const char*, const char*> rows[] = {{"date-format", "2"},
                                                      {"time-format", "1"},
                                                      {"sntp-addr", "192.0.2.1"},
                                                      {"ntp-secret", "x"},
                                                      {"sntp-tz-offset", "3"},
                                                      {"daylight-save", "true"},
                                                      {"daylight-save-minutes", "30"},
                                                      {"time-source", "1"},
                                                      {"daylight-save-zone-index", "9"},
                                                      {"daylight-save-zone-id", "12"},
                                                      {"auto-daylight-save", "true"}};
  for (const auto& [key, value] : rows) {
    const std::string text = std::string("ClockSettings set data ") + key + "(" + value + ")";
    const std::string before = telephone.managed(key);
    telephone.settings.refuseSets(0, 1);
    EXPECT_FALSE(telephone.manage(key, value)) << key;
    EXPECT_EQ(telephone.managed(key), before);
    EXPECT_TRUE(telephone.manage(key, value)) << key;
    EXPECT_EQ(telephone.managed(key), value);
    EXPECT_THAT(telephone.security.lines(), ElementsAre("refused " + text, "accepted " + text));
    telephone.security.clear();
  }
}

TEST_F(ClockWithSecurityLog, GetsTheSystemsTimeAfterTheSet) {
  EXPECT_TRUE(telephone.manage("time", "2030-12-31T23:30:15+00:00"));
  telephone.jumpTo(77);  // another program sets the system's clock
  EXPECT_TRUE(telephone.manage("date-format", "1"));
  const auto records = telephone.security.records();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].time, 1'924'990'215);
  EXPECT_EQ(records[1].time, 77);
}

TEST_F(ClockWithSecurityLog, GetsNoRecordForReading) {
  telephone.managed("date-format");
  telephone.managed("no-such-key");
  EXPECT_THAT(telephone.security.records(), IsEmpty());
}

TEST_F(ClockWithSecurityLog, GetsARecordForEachFormatThatIsReset) {
  telephone.manage("date-format", "1");
  EXPECT_TRUE(telephone.management.reset());
  EXPECT_THAT(telephone.security.lines(),
              ElementsAre("accepted ClockSettings set data date-format(1)",
                          "accepted ClockSettings set data date-format(0)"));
}

TEST_F(ClockWithSecurityLog, GetsRecordsFromItsFirstAppearanceOn) {
  telephone.context.remove("SecurityLogServiceIfc");
  telephone.manage("date-format", "1");
  telephone.context.add("SecurityLogServiceIfc", &telephone.security);
  telephone.manage("date-format", "2");
  telephone.context.remove("SecurityLogServiceIfc");  // known by now
  telephone.manage("date-format", "0");
  EXPECT_THAT(telephone.security.lines(),
              ElementsAre("accepted ClockSettings set data date-format(2)",
                          "accepted ClockSettings set data date-format(0)"));
}

// The security log may call back into the clock: the management lock is free by then.
TEST_F(ClockWithSecurityLog, IsCalledWithoutTheManagementLock) {
  class LogThatReadsTheClock final : public support::Part, public SecurityLogServiceIfc {
   public:
    explicit LogThatReadsTheClock(support::Telephone& owner) : m_telephone(owner) {}
    void record(time_t /*time*/, int /*facility*/, int /*severity*/, int /*eventClass*/,
                int /*eventCode*/, bool /*failure*/, const std::string& /*text*/,
                const std::string& /*subject*/, const std::string& /*origin*/) override {
      seen = m_telephone.managed("date-format");
    }
    std::string seen;

   private:
    support::Telephone& m_telephone;
  };
  LogThatReadsTheClock curious(telephone);
  telephone.context.add("SecurityLogServiceIfc", &curious);
  EXPECT_TRUE(telephone.manage("date-format", "2"));
  EXPECT_EQ(curious.seen, "2");
}

}  // namespace
