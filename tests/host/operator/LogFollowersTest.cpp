#include "operator/LogFollowers.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Logging.h"
#include "base/Origin.h"
#include "host/operator/RecordingChannel.h"

namespace host {
namespace {

void log(const std::string& text, int level = 5) {
  logAppUni("ClockService", level, "f.cpp", 7, "%s", text.c_str());
}

// The texts of the items that a client got.
std::string textsOf(const RecordingChannel& channel) {
  std::string texts;
  for (const std::string& item : channel.items) {
    texts += Json::parse(item).at("text").get<std::string>() + ' ';
  }
  return texts;
}

class FollowedLog : public testing::Test {
 protected:
  FollowedLog() { ApplicationLog::instance().addSink(followers); }
  ~FollowedLog() override { ApplicationLog::instance().removeSink(followers); }
  FollowedLog(const FollowedLog&) = delete;
  FollowedLog& operator=(const FollowedLog&) = delete;

  std::shared_ptr<RecordingChannel> follow(int level = 6) const {
    auto channel = std::make_shared<RecordingChannel>();
    followers->add(channel, level);
    return channel;
  }

  const LogKeeper keeper;
  const std::shared_ptr<LogFollowers> followers = std::make_shared<LogFollowers>();
};

TEST(LogEntryJson, HasAllMembers) {
  LogEntry entry = {.number = 1,
                    .wall = std::chrono::seconds(60),
                    .level = 5,
                    .component = "ClockService",
                    .file = "f.cpp",
                    .line = 7,
                    .text = "a\ntext\n\n"};
  EXPECT_EQ(entryJson(entry).dump(),
            R"({"number":1,"time":"1970-01-01T00:01:00Z","level":5,"component":"ClockService",)"
            R"("text":"a\ntext","file":"f.cpp","line":7})");
  entry.systemLog = true;
  EXPECT_EQ(entryJson(entry).at("component"), "syslog");
  entry.text = "\n";
  EXPECT_EQ(lineOf(entry), "");
}

TEST_F(FollowedLog, ListsWhatIsKeptUpToALevel) {
  log("error", 2);
  log("info", 5);
  log("note", 4);
  ASSERT_EQ(keptLog(6).size(), 3U);
  EXPECT_EQ(keptLog(6)[1].at("text"), "info");
  ASSERT_EQ(keptLog(4).size(), 2U);
  EXPECT_EQ(keptLog(4)[1].at("text"), "note");
  EXPECT_TRUE(keptLog(1).empty());
}

TEST_F(FollowedLog, ListsTheEntriesOfOneCall) {
  const std::string one = "uid 0, pid 1";
  const std::string other = "uid 0, pid 2";
  for (const std::uint32_t call : {1U, 2U}) {
    const OriginScope scope(one, call);
    log("one " + std::to_string(call));
    const OriginScope inner(other, call);
    log("other " + std::to_string(call));
  }
  log("device");
  ASSERT_EQ(logOfCall(one, 2).size(), 1U);
  EXPECT_EQ(logOfCall(one, 2)[0].at("text"), "one 2");
  EXPECT_TRUE(logOfCall(one, 3).empty());
}

TEST_F(FollowedLog, SendsTheLatestEntriesThatFit) {
  constexpr std::size_t kWritten = 1000;
  const std::string text(ApplicationLog::kLongestText, '\1');  // six bytes each in JSON
  for (std::size_t i = 1; i <= kWritten; ++i) {
    log(text, 4);
    log(text, 5);
  }
  const std::vector<Json> kept = keptLog(6);
  const auto channel = follow();
  ASSERT_FALSE(channel->items.empty());
  ASSERT_LT(channel->items.size(), kept.size()) << "not all fit";
  std::uint64_t next = kept.back().at("number").get<std::uint64_t>() - channel->items.size() + 1;
  for (const std::string& item : channel->items) EXPECT_EQ(Json::parse(item).at("number"), next++);
}

TEST_F(FollowedLog, SendsKeptAndNewEntries) {
  log("before");
  const auto channel = follow();
  log("after");
  log("trace, which nobody asked for at the start", 6);
  EXPECT_EQ(textsOf(*channel), "before after ");
  EXPECT_TRUE(channel->replies.empty());
}

TEST_F(FollowedLog, SendsEachFollowerItsLevels) {
  log("old-error", 2);
  log("old-info", 5);
  const auto errors = follow(2);
  const auto all = follow(6);
  log("warning", 3);
  log("error", 2);
  EXPECT_EQ(textsOf(*errors), "old-error error ");
  EXPECT_EQ(textsOf(*all), "old-error old-info warning error ");
  followers->remove(all.get());
  EXPECT_FALSE(followers->takes({.level = 3}));
  EXPECT_TRUE(followers->takes({.level = 2}));
}

// An entry that another thread writes while the kept ones are sent.
TEST_F(FollowedLog, MissesNoEntryWhileTheKeptOnesAreSent) {
  class LoggingChannel : public RecordingChannel {
   public:
    bool item(std::string_view json) override {
      if (items.empty()) log("meanwhile");
      return RecordingChannel::item(json);
    }
  };
  log("before");
  const auto channel = std::make_shared<LoggingChannel>();
  followers->add(channel, 6);
  log("after");
  EXPECT_EQ(textsOf(*channel), "before meanwhile after ");
}

TEST_F(FollowedLog, RemovesFollowersThatAreGoneOrDoNotRead) {
  const auto stuck = follow();
  const auto leaving = follow();
  stuck->reads = false;
  log("x");
  followers->remove(leaving.get());
  stuck->reads = true;
  log("y");
  EXPECT_EQ(textsOf(*stuck), "");
  EXPECT_EQ(textsOf(*leaving), "x ");
  EXPECT_EQ(stuck.use_count(), 1);
  EXPECT_EQ(leaving.use_count(), 1);
  EXPECT_FALSE(followers->takes({.level = 0}));
}

TEST_F(FollowedLog, ForgetsAFollowerThatDoesNotReadTheKeptEntries) {
  log("x");
  const auto stuck = std::make_shared<RecordingChannel>();
  stuck->reads = false;
  followers->add(stuck, 6);
  EXPECT_EQ(stuck.use_count(), 1);
}

}  // namespace
}  // namespace host
