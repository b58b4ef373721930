#include "operator/LogRing.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/operator/RecordingChannel.h"

namespace host {
namespace {

LogEntry entry(std::uint64_t number, const std::string& text) {
  return {.number = number,
          .wall = std::chrono::seconds(60),
          .level = 5,
          .component = "ClockService",
          .file = "f.cpp",
          .line = 7,
          .text = text};
}

TEST(LogRing, EntriesHaveAllMembers) {
  LogRing ring;
  ring.write(entry(1, "text\n"));
  ASSERT_EQ(ring.entries().size(), 1U);
  EXPECT_EQ(ring.entries()[0].dump(),
            R"({"number":1,"time":"1970-01-01T00:01:00Z","level":5,"component":"ClockService",)"
            R"("text":"text","file":"f.cpp","line":7})");
}

TEST(LogRing, NamesTheSystemLog) {
  LogRing ring;
  LogEntry notice = entry(1, "x");
  notice.systemLog = true;
  ring.write(notice);
  EXPECT_EQ(ring.entries()[0].at("component"), "syslog");
}

TEST(LogRing, DropsTheOldestEntry) {
  LogRing ring;
  for (std::uint64_t i = 1; i <= LogRing::kKept + 1; ++i) ring.write(entry(i, "x"));
  EXPECT_EQ(ring.entries().size(), LogRing::kKept);
  EXPECT_EQ(ring.entries().front().at("number"), 2);
}

TEST(LogRing, AFollowerGetsTheLatestEntriesThatFit) {
  LogRing ring;
  const std::string text(ApplicationLog::kLongestText, '"');  // two bytes each in JSON
  for (std::uint64_t i = 1; i <= LogRing::kKept; ++i) ring.write(entry(i, text));
  const auto channel = std::make_shared<RecordingChannel>();
  ring.follow(channel);
  ASSERT_FALSE(channel->items.empty());
  ASSERT_LT(channel->items.size(), LogRing::kKept) << "not all fit";
  std::uint64_t next = LogRing::kKept - channel->items.size() + 1;
  for (const std::string& item : channel->items) EXPECT_EQ(Json::parse(item).at("number"), next++);
}

TEST(LogRing, AFollowerGetsKeptAndNewEntries) {
  LogRing ring;
  ring.write(entry(1, "before"));
  const auto channel = std::make_shared<RecordingChannel>();
  ring.follow(channel);
  ring.write(entry(2, "after"));
  ASSERT_EQ(channel->items.size(), 2U);
  EXPECT_EQ(Json::parse(channel->items[0]).at("text"), "before");
  EXPECT_EQ(Json::parse(channel->items[1]).at("text"), "after");
  EXPECT_TRUE(channel->replies.empty());
}

TEST(LogRing, RemovesFollowersThatAreGoneOrDoNotRead) {
  LogRing ring;
  const auto stuck = std::make_shared<RecordingChannel>();
  const auto leaving = std::make_shared<RecordingChannel>();
  ring.follow(stuck);
  ring.follow(leaving);
  stuck->reads = false;
  ring.write(entry(1, "x"));
  ring.unfollow(leaving.get());
  stuck->reads = true;
  ring.write(entry(2, "y"));
  EXPECT_EQ(stuck->items.size(), 0U);
  EXPECT_EQ(leaving->items.size(), 1U);
  EXPECT_EQ(stuck.use_count(), 1);
  EXPECT_EQ(leaving.use_count(), 1);
}

}  // namespace
}  // namespace host
