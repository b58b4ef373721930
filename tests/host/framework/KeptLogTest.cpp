// What the application log keeps for those who ask later.

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Logging.h"
#include "base/Origin.h"
#include "framework/ApplicationLog.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace {

using host::ApplicationLog;
using Texts = std::vector<std::string>;

void write(int level, const std::string& text) {
  logAppUni("Part", level, "file.cpp", 7, "%s", text.c_str());
}

Texts keptTexts(std::uint64_t after = 0) {
  Texts texts;
  for (const host::LogEntry& entry : ApplicationLog::instance().kept(after)) {
    texts.push_back(entry.text);
  }
  return texts;
}

class KeptLog : public testing::Test {
 protected:
  ~KeptLog() override { ApplicationLog::instance().setLevel(m_before); }
  const int m_before = ApplicationLog::instance().level();
};

TEST_F(KeptLog, HoldsEntriesUpToLevelFiveWhateverIsShown) {
  const support::LogCapture shown(2);
  write(2, "before the keeper");
  const host::LogKeeper keeper;
  EXPECT_TRUE(keptTexts().empty());
  EXPECT_TRUE(loggingOnAppUni("any", 5));
  EXPECT_FALSE(loggingOnAppUni("any", 6));
  for (int level = 0; level <= 6; ++level) write(level, std::to_string(level));
  EXPECT_EQ(keptTexts(), (Texts{"0", "1", "2", "3", "4", "5"}));
  EXPECT_EQ(ApplicationLog::instance().level(), 2);
  EXPECT_TRUE(shown.has("2"));
  EXPECT_FALSE(shown.has("3"));
  ApplicationLog::instance().setLevel(6);
  write(6, "trace");
  EXPECT_EQ(keptTexts().back(), "trace");
}

constexpr std::size_t kFlood = 500;  // entries; the ring has room for them

// So many entries within a remote call. Those that were kept. Each thread has a limit of its own,
// and this one is new.
std::size_t keptOfFlood(host::Cause cause = {}) {
  const host::LogKeeper keeper;
  std::thread([cause] {
    const std::string origin = "uid 1, pid 2";
    const host::OriginScope call(origin, 3);
    const host::CauseScope scope(cause);
    for (std::size_t i = 0; i < kFlood; ++i) write(5, "x");
  }).join();
  return keptTexts().size();
}

TEST_F(KeptLog, HoldsFewOfTheEntriesAboutManyCallsThatChangeNothing) {
  const support::LogCapture shown(4);
  const std::size_t kept = keptOfFlood();
  EXPECT_GT(kept, 0U);
  EXPECT_LT(kept, kFlood);
}

TEST_F(KeptLog, HoldsAllEntriesAboutACallThatChangesTheClock) {
  const support::LogCapture shown(4);
  EXPECT_EQ(keptOfFlood({"call", "setTime"}), kFlood);
}

TEST_F(KeptLog, HoldsAllEntriesThatAreShown) {
  const support::LogCapture shown(5);
  EXPECT_EQ(keptOfFlood(), kFlood);
}

class Follower : public host::LogSink {
 public:
  explicit Follower(int level) { takeUpTo(level); }
  void write(const host::LogEntry& /*entry*/) override { ++entries; }
  std::size_t entries = 0;
};

TEST_F(KeptLog, HoldsAllEntriesWhileSomebodyFollowsThem) {
  ApplicationLog::instance().setLevel(4);
  {
    const auto follower = std::make_shared<Follower>(5);
    ApplicationLog::instance().addSink(follower);
    EXPECT_EQ(keptOfFlood(), kFlood);
    EXPECT_EQ(follower->entries, kFlood);
    ApplicationLog::instance().removeSink(follower);
  }
  EXPECT_LT(keptOfFlood(), kFlood) << "the follower has left";
}

TEST_F(KeptLog, LastsWhileThereIsAKeeper) {
  ApplicationLog::instance().setLevel(4);
  {
    const host::LogKeeper keeper;
    write(5, "one");
    { const host::LogKeeper another; }
    write(5, "two");
    EXPECT_EQ(keptTexts(), (Texts{"one", "two"}));
  }
  EXPECT_FALSE(loggingOnAppUni("any", 5));
  write(4, "between");
  const host::LogKeeper later;
  EXPECT_TRUE(keptTexts().empty());
}

TEST_F(KeptLog, HasOriginAndCall) {
  const host::LogKeeper keeper;
  {
    const std::string origin = "uid 1000, pid 4711";
    const host::OriginScope scope(origin, 7);
    write(4, "of a call");
  }
  syslogger_notice("of the device");
  const auto entries = ApplicationLog::instance().kept();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].origin, "uid 1000, pid 4711");
  EXPECT_EQ(entries[0].call, 7U);
  EXPECT_EQ(entries[0].component, "Part");
  EXPECT_EQ(entries[0].file, "file.cpp");
  EXPECT_EQ(entries[1].origin, "");
  EXPECT_EQ(entries[1].call, 0U);
  EXPECT_TRUE(entries[1].systemLog);
}

TEST_F(KeptLog, HoldsNotesWhenManyDetailsFollow) {
  const host::LogKeeper keeper;
  write(4, "note");
  write(5, "detail");
  for (int i = 0; i < 5000; ++i) write(5, "many");
  write(2, "error");
  const Texts kept = keptTexts();
  ASSERT_GT(kept.size(), 1000U);
  EXPECT_EQ(kept.front(), "note");
  EXPECT_EQ(kept[1], "many");
  EXPECT_EQ(kept.back(), "error");
  const auto entries = ApplicationLog::instance().kept();
  for (std::size_t i = 1; i < entries.size(); ++i) {
    ASSERT_GT(entries[i].number, entries[i - 1].number);
  }
  EXPECT_EQ(keptTexts(entries[entries.size() - 3].number), (Texts{"many", "error"}));
}

TEST_F(KeptLog, NeedsNoMemory) {
  const host::LogKeeper keeper;
  const std::string text(3000, 'x');
  {
    const support::NoMemory none;
    write(5, text);
    syslogger_notice("%s", text.c_str());
  }
  EXPECT_EQ(keptTexts(), Texts(2, std::string(1024, 'x') + "... (3000 bytes)"));
}

TEST_F(KeptLog, DropsWhatIsLoggedWhileItIsSeen) {
  const host::LogKeeper keeper;
  write(1, "one");
  ApplicationLog::instance().withKept(0, [](const std::vector<host::LogEntry>& entries) {
    write(1, "from inside");
    EXPECT_EQ(entries.size(), 1U);
  });
  write(1, "two");
  EXPECT_EQ(keptTexts(), (Texts{"one", "two"}));
}

TEST_F(KeptLog, StaysWholeWhileThreadsWriteAndRead) {
  const host::LogKeeper keeper;
  const auto writeMany = [](const std::string& text) {
    for (int i = 0; i < 2000; ++i)
      write(4 + i % 2, text.substr(0, static_cast<std::size_t>(i % 90)));
  };
  const std::string text(90, 'x');
  std::thread one([&] { writeMany(text); });
  std::thread two([&] { writeMany(text); });
  for (int i = 0; i < 50; ++i) {
    const auto entries = ApplicationLog::instance().kept();
    for (std::size_t at = 0; at < entries.size(); ++at) {
      ASSERT_EQ(entries[at].text, text.substr(0, entries[at].text.size()));
      ASSERT_TRUE(at == 0 || entries[at].number > entries[at - 1].number);
    }
  }
  one.join();
  two.join();
}

}  // namespace
