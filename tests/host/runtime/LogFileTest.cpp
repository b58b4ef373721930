#include "runtime/LogFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <exception>
#include <string>

#include "support/ErrorOf.h"
#include "support/FileContent.h"
#include "support/NoMemory.h"
#include "support/SoftLimit.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using support::contentOf;

class LogFiles : public ::testing::Test {
 protected:
  [[nodiscard]] fs::path older(int number) const {
    return m_path.string() + '.' + std::to_string(number);
  }

  const support::TemporaryFolder m_folder;
  const fs::path m_path = m_folder / "log";
};

TEST_F(LogFiles, AreAppendedToAndForTheirOwnerOnly) {
  LogFile(m_path).write("one\n");
  LogFile(m_path).write("two\n");
  EXPECT_EQ(contentOf(m_path), "one\ntwo\n");
  EXPECT_EQ(fs::status(m_path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(LogFiles, AreRenamedBeforeTheyGrowTooLong) {
  LogFile log(m_path, 8);
  for (const char* const line : {"one\n", "two\n", "three\n", "four\n"}) log.write(line);
  EXPECT_EQ(contentOf(older(2)), "one\ntwo\n");
  EXPECT_EQ(contentOf(older(1)), "three\n");
  EXPECT_EQ(contentOf(m_path), "four\n");
}

TEST_F(LogFiles, AreKeptUpToANumber) {
  LogFile log(m_path, 1);
  for (int line = 0; line < 9; ++line) log.write(std::to_string(line));
  EXPECT_EQ(contentOf(m_path), "8");
  EXPECT_EQ(contentOf(older(LogFile::kOlderFiles)), "4");
  EXPECT_FALSE(fs::exists(older(LogFile::kOlderFiles + 1)));
}

TEST_F(LogFiles, CountWhatIsInThemAtTheStart) {
  LogFile(m_path, 8).write("before\n");
  LogFile(m_path, 8).write("after\n");
  EXPECT_EQ(contentOf(older(1)), "before\n");
}

TEST_F(LogFiles, MayHoldALineThatIsLongerThanTheLimit) {
  LogFile(m_path, 8).write("longer than that\n");
  EXPECT_EQ(contentOf(m_path), "longer than that\n");
  EXPECT_FALSE(fs::exists(older(1)));
}

TEST_F(LogFiles, AreOpenedAgainWhenAsked) {
  LogFile log(m_path);
  log.write("one\n");
  fs::rename(m_path, m_folder / "moved");
  log.write("two\n");
  EXPECT_FALSE(fs::exists(m_path));
  log.reopen();
  log.write("three\n");
  EXPECT_EQ(contentOf(m_folder / "moved"), "one\ntwo\n");
  EXPECT_EQ(contentOf(m_path), "three\n");
}

TEST_F(LogFiles, ThatCannotBeOpenedAgainStayOpen) {
  LogFile log(m_path);
  fs::rename(m_path, m_folder / "moved");
  fs::create_directory(m_path);
  log.reopen();
  ::testing::internal::CaptureStderr();
  log.write("one\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "clockhost: log file cannot be opened: " + m_path.string() + ": Is a directory\n");
  EXPECT_EQ(contentOf(m_folder / "moved"), "one\n");
}

// As on a full disk. The limit ignores SIGXFSZ, as every program does.
TEST_F(LogFiles, ThatCannotBeWrittenAreReportedOnceUntilTheyCan) {
  const std::string before(1000, 'x');
  LogFile log(m_path);
  log.write(before);
  std::signal(SIGXFSZ, SIG_IGN);
  ::testing::internal::CaptureStderr();
  {
    const support::SoftLimit none(RLIMIT_FSIZE, before.size());
    log.write("lost\n");
    log.write("lost\n");
  }
  log.write("written\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "clockhost: log file cannot be written: " + m_path.string() + ": File too large\n");
  EXPECT_EQ(contentOf(m_path), before + "written\n");
}

// The thread that writes the log catches nothing. Each allocation of a rotation fails once.
TEST_F(LogFiles, WithoutMemoryLoseALineAndGoOn) {
  LogFile log(m_path, 1);
  log.write("first\n");
  bool threw = false;
  bool ranOut = true;
  for (std::size_t number = 0; ranOut; ++number) {
    const support::NoMemory none(number);
    try {
      log.write("more\n");
    } catch (const std::exception&) {
      threw = true;
    }
    ranOut = support::NoMemory::ranOut();
  }
  EXPECT_FALSE(threw);
  log.write("last\n");
  EXPECT_EQ(contentOf(m_path), "last\n");
}

TEST_F(LogFiles, OfAnotherKindAreRefused) {
  const std::string folder = m_folder.path();
  ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
  const std::pair<std::string, std::string> rows[] = {
      {folder, "log file cannot be opened: " + folder + ": Is a directory"},
      {folder + "/none/log",
       "log file cannot be opened: " + folder + "/none/log: No such file or directory"},
      {"/dev/null", "log file is not a regular file: /dev/null"},
      {m_path, "log file cannot be opened: " + m_path.string() + ": No such device or address"}};
  for (const auto& [path, error] : rows) {
    EXPECT_EQ(errorOf([&file = path] { const LogFile log(file); }), error);
  }
}

}  // namespace
}  // namespace host
