// What the security log keeps and counts.
#include "base/Origin.h"
#include "host/services/SecurityLogFile.h"
#include "host/services/StoreFaults.h"
#include "support/NoMemory.h"

namespace host {
namespace {

TEST_F(SecurityLogFile, KeepsAllFieldsAndAnyBytes) {
  SecurityLog security(folder.path());
  const std::string bytes("a\0b\xFF\n", 5);
  security.record(1466035200, 4, 1, 5, 3, true, bytes, "user", "web");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].number, 1);
  EXPECT_EQ(fieldsOf(records[0]), std::tuple(1466035200, 4, 1, 5, 3, true, bytes, "user", "web"));
}

TEST_F(SecurityLogFile, ListsRecordsAfterANumberOldestFirst) {
  SecurityLog security(folder.path());
  for (const char* const text : {"a", "b", "c"}) record(security, text);
  const auto records = security.list(1, 2);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].text, "b");
  EXPECT_EQ(records[1].text, "c");
  ASSERT_EQ(security.list(0, 1).size(), 1U);
  EXPECT_EQ(security.list(0, 1)[0].text, "a");
  EXPECT_TRUE(security.list(3, 10).empty());
  EXPECT_TRUE(security.list(0, 0).empty());
}

TEST_F(SecurityLogFile, DropsTheOldestRecordsOfEachKind) {
  SecurityLog security;
  int sources = 0;
  const auto source = [&] { return "source " + std::to_string(++sources); };
  const auto refuse = [&] { security.record(1, 4, 1, 5, 3, true, "refused", "", source()); };
  const auto act = [&] { security.record(1, 4, 1, 5, 4, false, "act", "", source()); };
  for (int i = 0; i < SecurityLog::kSets; ++i) record(security, std::to_string(i));
  for (int i = 0; i < SecurityLog::kHostActs; ++i) act();
  for (int i = 0; i < SecurityLog::kRefused; ++i) refuse();
  constexpr auto kAll = SecurityLog::kSets + SecurityLog::kHostActs + SecurityLog::kRefused;
  EXPECT_EQ(security.kept().records, kAll);
  EXPECT_EQ(security.kept().dropped, 0);
  record(security, "one more");
  for (int i = 0; i < 2; ++i) act();
  for (int i = 0; i < 3; ++i) refuse();
  EXPECT_EQ(security.kept().records, kAll);
  EXPECT_EQ(security.kept().dropped, 6);
  const auto records = security.list(0, SIZE_MAX);
  ASSERT_EQ(records.size(), static_cast<std::size_t>(kAll));
  const auto number = [&](std::int64_t row) {
    return records[static_cast<std::size_t>(row)].number;
  };
  EXPECT_EQ(number(0), 2) << "the oldest set was dropped";
  EXPECT_EQ(number(SecurityLog::kSets - 1), SecurityLog::kSets + 3)
      << "two host records were dropped";
  EXPECT_EQ(number(kAll - 6), kAll + 1) << "three refusals were dropped";
  EXPECT_EQ(number(kAll - 1), kAll + 6);
}

// A shell loop repeats sets like these.
TEST_F(SecurityLogFile, RefusedSetsOfOneUsersProcessesDisplaceNoOtherRecords) {
  SecurityLog security;
  const auto pid = [](int i) { return "uid 1000, pid " + std::to_string(i); };
  for (int i = 1; i <= 1000; ++i) {
    security.record(i, 4, 1, 5, 3, false, "same", "", pid(i));
    security.record(i, 4, 1, 5, 3, true, std::to_string(i), "of " + std::to_string(i), pid(i));
  }
  security.record(1, 4, 1, 5, 3, false, "same", "", "uid 1001, pid 1");
  const auto records = security.list(0, SIZE_MAX);
  ASSERT_EQ(records.size(), 22U);
  EXPECT_EQ(records[0].count, 1000);
  EXPECT_EQ(records[0].time, 1);
  EXPECT_EQ(records[0].origin, pid(1000)) << "of the last attempt";
  EXPECT_EQ(records[19].count, 1);
  EXPECT_EQ(records[20].count, 981);
  EXPECT_EQ(records[20].time, 20);
  EXPECT_EQ(records[20].lastTime, 1000);
  EXPECT_EQ(records[20].text, "1000");
  EXPECT_EQ(records[20].subject, "of 1000");
  EXPECT_EQ(records[20].origin, pid(1000));
  EXPECT_EQ(records[21].origin, "uid 1001, pid 1");
}

TEST_F(SecurityLogFile, ClockMovesOfOneUserDisplaceNoOtherRecords) {
  SecurityLog security;
  record(security, "before");
  for (int i = 0; i < 10'000; ++i) {
    security.note(SecurityLog::Event::clock, false, "Clock jump " + std::to_string(i));
  }
  EXPECT_EQ(security.kept().records, 21);
  EXPECT_EQ(security.list(0, 1)[0].text, "before");
}

TEST_F(SecurityLogFile, ContinuesAfterReopening) {
  {
    SecurityLog security(folder.path());
    for (int i = 0; i < 3; ++i) record(security, "a");
  }
  SecurityLog security(folder.path());
  record(security, "a");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 2U) << "the sources are forgotten";
  EXPECT_EQ(records[0].count, 3);
  EXPECT_EQ(records[1].number, 2);
}

// Destructors write records too.
TEST_F(SecurityLogFile, DoesNotThrowWithoutMemory) {
  const std::string text = "a text that is too long for a short string";
  std::size_t allocations = 0;
  for (bool ranOut = true; ranOut; ++allocations) {
    SecurityLog security(folder.path());
    const FailingWrites full(ENOSPC);
    const support::NoMemory none(allocations);
    EXPECT_NO_THROW(security.note(SecurityLog::Event::clock, false, text));
    ranOut = support::NoMemory::ranOut();
  }
  EXPECT_GT(allocations, 1U);
}

TEST_F(SecurityLogFile, RecordsTheThreadsOrigin) {
  SecurityLog security;
  const std::string origin = "uid 1000, pid 4711";
  {
    const OriginScope scope(origin);
    record(security, "a");
    security.note(SecurityLog::Event::injection, true, "b");
    security.record(1, 4, 1, 5, 3, false, "c", "", "said");
  }
  record(security, "d");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 4U);
  EXPECT_EQ(records[0].origin, origin);
  EXPECT_EQ(records[1].origin, origin);
  EXPECT_EQ(records[1].eventCode, 5);
  EXPECT_TRUE(records[1].failure);
  EXPECT_EQ(records[2].origin, "said");
  EXPECT_EQ(records[3].origin, "");
}

TEST_F(SecurityLogFile, ClipsLongTextsAndAddsTheirLength) {
  SecurityLog security(folder.path());
  const std::string longest(SecurityLog::kLongestText, 'x');
  security.record(1, 4, 1, 5, 3, false, longest, longest + "y", longest + "yz");
  const auto records = security.list(0, 1);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].text, longest);
  EXPECT_EQ(records[0].subject, longest + "... (4097 bytes)");
  EXPECT_EQ(records[0].origin, longest + "... (4098 bytes)");
}

}  // namespace
}  // namespace host
