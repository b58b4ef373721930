#include "SecurityLogServiceIfc.h"

#include <atomic>
#include <string>

#include "Promise.h"

namespace {

class SecurityLogServiceIfcPromise : public conformance::Promise {
 protected:
  SecurityLogServiceIfc& securityLog() {
    return service<SecurityLogServiceIfc>("SecurityLogServiceIfc");
  }
};

TEST_F(SecurityLogServiceIfcPromise, KeepsAllFields) {
  promises(
      "time: seconds since 1970-01-01 UTC. The four numbers classify the event: facility, "
      "severity, "
      "event class and event code. failure: the attempt was refused. subject, origin: who and from "
      "where");
  securityLog().record(1'466'035'200, 4, 1, 5, 3, true, "a text", "a user", "the web");
  const auto records = platform().securityRecords();
  ASSERT_EQ(records.size(), 1U);
  const conformance::SecurityRecord& record = records[0];
  EXPECT_EQ(record.time, 1'466'035'200);
  EXPECT_EQ(record.facility, 4);
  EXPECT_EQ(record.severity, 1);
  EXPECT_EQ(record.eventClass, 5);
  EXPECT_EQ(record.eventCode, 3);
  EXPECT_TRUE(record.failure);
  EXPECT_EQ(record.text, "a text");
  EXPECT_EQ(record.subject, "a user");
  EXPECT_EQ(record.origin, "the web");
}

TEST_F(SecurityLogServiceIfcPromise, AppendsRecords) {
  promises("Appends one record.");
  for (const char* const text : {"one", "two", "three"})
    securityLog().record(1, 4, 1, 5, 3, false, text, "", "");
  const auto records = platform().securityRecords();
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].text, "one");
  EXPECT_EQ(records[2].text, "three");
  EXPECT_EQ(records[0].subject, "") << "the device itself";
}

TEST_F(SecurityLogServiceIfcPromise, AnyThreadMayRecord) {
  promises("Thread: any.");
  SecurityLogServiceIfc& shared = securityLog();
  std::atomic<int> last{0};
  conformance::onTwoThreads([&] {
    for (int i = 0; i < 20; ++i)
      shared.record(1, 4, 1, 5, 3, false, std::to_string(++last), "", "");
  });
  EXPECT_EQ(platform().securityRecords().size(), 40U);
}

}  // namespace
