#include "services/History.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/ApplicationLog.h"
#include "support/ErrorOf.h"
#include "support/FileContent.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

Change changeTo(const std::string& value) {
  return {std::chrono::seconds(1'773'000'000),
          "TimezoneOffset",
          "set sntp-tz-offset",
          "uid 1000, pid 4711",
          "0",
          value};
}

class KeptHistory : public ::testing::Test {
 protected:
  // Writes each change at once.
  void start() {
    history.emplace(folder.path());
    history->writeWith([this] { due = true; });
  }
  void add(const std::string& value) {
    history->add(changeTo(value));
    if (std::exchange(due, false)) history->write();
  }
  void write(const std::string& text) const { std::ofstream(file) << text; }
  std::vector<std::string> values(std::size_t most = 10) {
    std::vector<std::string> texts;
    for (const Change& change : history->list(most)) texts.push_back(change.to);
    return texts;
  }
  std::size_t lines() const {
    const std::string text = support::contentOf(file);
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  }

  using Texts = std::vector<std::string>;

  support::TemporaryFolder folder;
  const std::filesystem::path file = folder / "history";
  const std::filesystem::path older = folder / "history.1";
  support::LogCapture log;
  std::optional<History> history;
  bool due = false;
};

TEST_F(KeptHistory, IsThereAfterTheProcessWasKilled) {
  start();
  add("-5");
  EXPECT_EQ(support::contentOf(file),
            "clock history 1\n1773000000\tTimezoneOffset\tset sntp-tz-offset\tuid 1000, pid 4711\t"
            "0\t-5\n");
  History after(folder.path());
  const auto changes = after.list(10);
  ASSERT_EQ(changes.size(), 1U);
  EXPECT_EQ(changes[0].time, std::chrono::seconds(1'773'000'000));
  EXPECT_EQ(changes[0].cause, "set sntp-tz-offset");
  EXPECT_EQ(changes[0].who, "uid 1000, pid 4711");
  EXPECT_EQ(changes[0].from, "0");
}

TEST_F(KeptHistory, AsksForAWriteWhenTheFirstChangeAfterTheStartWaits) {
  int asked = 0;
  history.emplace(folder.path());
  history->add(changeTo("1"));
  history->writeWith([&] { ++asked; });
  EXPECT_EQ(asked, 0);
  history->add(changeTo("2"));
  history->add(changeTo("3"));
  EXPECT_EQ(asked, 1);
  EXPECT_FALSE(std::filesystem::exists(file));
  history->write();
  EXPECT_EQ(lines(), 4U);
  struct stat found {};
  ASSERT_EQ(::stat(file.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777, 0600U);
  history->add(changeTo("4"));
  EXPECT_EQ(asked, 2);
}

TEST_F(KeptHistory, AsksAgainAfterItCouldNotAsk) {
  int asked = 0;
  history.emplace(folder.path());
  history->writeWith([&] {
    if (++asked == 1) throw std::bad_alloc();
  });
  EXPECT_THROW(history->add(changeTo("1")), std::bad_alloc);
  history->add(changeTo("2"));
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(values(), (Texts{"1", "2"}));
}

// The task that was asked for did not run, as for lack of memory.
TEST_F(KeptHistory, AsksAgainAfterAList) {
  int asked = 0;
  history.emplace(folder.path());
  history->writeWith([&] { ++asked; });
  history->add(changeTo("1"));
  EXPECT_EQ(values(), Texts{"1"});
  history->add(changeTo("2"));
  EXPECT_EQ(asked, 2);
}

TEST_F(KeptHistory, WritesAtItsEndWhatWaits) {
  history.emplace(folder.path());
  history->add(changeTo("1"));
  history.reset();
  EXPECT_EQ(lines(), 2U);
}

TEST_F(KeptHistory, ListsTheNewest) {
  start();
  for (int i = 0; i < 5; ++i) add(std::to_string(i));
  EXPECT_EQ(values(2), (Texts{"3", "4"}));
  EXPECT_EQ(values(9), (Texts{"0", "1", "2", "3", "4"}));
}

TEST_F(KeptHistory, BeginsANewFileAfterAThousandAndListsBoth) {
  start();
  for (int i = 1; i <= 2000; ++i) add(std::to_string(i));
  EXPECT_EQ(lines(), 1001U);
  EXPECT_EQ(values(1000).front(), "1001");
  start();  // counts the lines of the file
  add("2001");
  add("2002");
  EXPECT_EQ(lines(), 3U);
  EXPECT_TRUE(support::contentOf(older).ends_with("\t2000\n"));
  EXPECT_EQ(values(1000).size(), 1000U);
  EXPECT_EQ(values(1000).front(), "1003");
  EXPECT_EQ(values(3), (Texts{"2000", "2001", "2002"}));
}

TEST_F(KeptHistory, KeepsAThousandInMemory) {
  History inMemory;
  for (int i = 1; i <= 1001; ++i) inMemory.add(changeTo(std::to_string(i)));
  EXPECT_EQ(inMemory.list(1000).front().to, "2");
  inMemory.add(changeTo("1002"));
  EXPECT_EQ(inMemory.list(1000).front().to, "3");
  EXPECT_EQ(inMemory.list(1).front().to, "1002");
}

TEST_F(KeptHistory, KeepsEachTextOnItsLineAndShort) {
  start();
  add("a\tb\nc" + std::string(5000, 'x'));
  EXPECT_EQ(lines(), 2U);
  const std::string value = values().front();
  EXPECT_TRUE(value.starts_with("a\\x09b\\nc")) << value;
  EXPECT_LT(value.size(), 250U);
}

TEST_F(KeptHistory, LeavesOutDamagedLines) {
  const std::string wrong[] = {"no history",           "clock history 2",
                               std::string(100, '\0'), "",
                               "x\ta\tb\tc\td\te",     "5\ta\tb\tc\td",
                               "5\ta\tb\tc\td\te\tf",  "99999999999999999999\ta\tb\tc\td\te"};
  start();
  add("1");
  const std::string text = support::contentOf(file);
  for (const std::string& line : wrong) {
    log.clear();
    write(text + line + '\n');
    add("2");
    EXPECT_EQ(values(), (Texts{"1", "2"})) << line;
    EXPECT_TRUE(log.hasPart("has damaged lines, which are left out: 1")) << line << log.text();
    EXPECT_TRUE(support::contentOf(file).starts_with(text + line + '\n'));
  }
}

TEST_F(KeptHistory, LosesOnlyALineThatAPowerCutClipped) {
  start();
  add("1");
  add("2");
  const std::string text = support::contentOf(file);
  write(text.substr(0, text.size() - 1));
  start();
  EXPECT_EQ(values(), Texts{"1"});
  add("3");
  EXPECT_TRUE(log.hasPart("ended within a line: that change is lost"));
  EXPECT_EQ(values(), (Texts{"1", "3"}));
  EXPECT_EQ(lines(), 3U);
}

TEST_F(KeptHistory, KeepsInMemoryWhatCannotBeWrittenAndLogsItOnce) {
  std::filesystem::create_directory(file);
  start();
  add("1");
  add("2");
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(log.hasPart("is not a regular file; remove it")) << log.text();
  std::filesystem::remove(file);
  add("3");
  EXPECT_EQ(values(), (Texts{"1", "2", "3"}));
  EXPECT_EQ(lines(), 4U);
}

// The first page of a process's memory cannot be read.
TEST_F(KeptHistory, IsRefusedWhenItCannotBeRead) {
  std::filesystem::create_symlink("/proc/self/mem", file);
  start();
  EXPECT_EQ(errorOf([this] { static_cast<void>(history->list(10)); }),
            "history \"" + file.string() + "\" cannot be read: Input/output error");
}

TEST_F(KeptHistory, KeepsItsFileWhenTheOlderOneCannotBeReplaced) {
  std::filesystem::create_directory(older);
  start();
  for (int i = 1; i <= 1003; ++i) add(std::to_string(i));
  EXPECT_TRUE(log.hasPart("cannot be renamed: Is a directory")) << log.text();
  EXPECT_EQ(log.entries().size(), 1U);
  EXPECT_EQ(lines(), 1001U);
  std::filesystem::remove(older);
  add("1004");
  EXPECT_EQ(values(2), (Texts{"1003", "1004"}));
  EXPECT_EQ(lines(), 5U);
}

// Called while the file is written.
class AddingSink final : public LogSink {
 public:
  explicit AddingSink(History& history) : m_history(history) {}
  void write(const LogEntry&) override {
    m_adder = std::thread([this] {
      m_history.add(changeTo("2"));
      m_added.set_value();
    });
    ready = m_added.get_future().wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  }
  void join() { m_adder.join(); }

  bool ready = false;

 private:
  History& m_history;
  std::promise<void> m_added;
  std::thread m_adder;
};

TEST_F(KeptHistory, TakesAChangeWhileItsFileIsWritten) {
  std::filesystem::create_directory(file);
  history.emplace(folder.path());
  history->add(changeTo("1"));
  const auto sink = std::make_shared<AddingSink>(*history);
  ApplicationLog::instance().addSink(sink);
  history->write();
  ApplicationLog::instance().removeSink(sink);
  sink->join();
  EXPECT_TRUE(sink->ready);
  std::filesystem::remove(file);
  EXPECT_EQ(values(), (Texts{"1", "2"}));
}

TEST_F(KeptHistory, ContinuesInANewFileWhenTheOldOneWasRemoved) {
  start();
  add("1");
  std::filesystem::remove(file);
  add("2");
  EXPECT_EQ(values(), Texts{"2"});
}

}  // namespace
}  // namespace host
