// What takes the place of the history's file.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "services/History.h"
#include "support/FileContent.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

class HistoryPlace : public ::testing::Test {
 protected:
  // A history that writes one change.
  void writeChange() const {
    History history(folder.path());
    history.add({std::chrono::seconds(5), "TimezoneOffset", "set", "uid 0", "0", "1"});
    history.write();
  }

  const support::TemporaryFolder folder;
  const fs::path file = folder / "history";
  const support::LogCapture log{3};
};

TEST_F(HistoryPlace, IsNotFollowedIfItIsALink) {
  const fs::path target = folder / "target";
  fs::create_symlink(target, file);
  writeChange();
  EXPECT_FALSE(fs::exists(target));
  std::ofstream(target) << "text\n";
  writeChange();
  EXPECT_EQ(support::contentOf(target), "text\n");
  EXPECT_TRUE(log.hasPart("cannot be written: Too many levels of symbolic links")) << log.text();
}

TEST_F(HistoryPlace, IsRefusedIfItIsAPipe) {
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  writeChange();
  EXPECT_TRUE(log.hasPart("is not a regular file; remove it")) << log.text();
}

// The pipe comes after the check of the file: the log line about its mode is between the two.
TEST_F(HistoryPlace, IsNotWaitedForIfItBecomesAPipe) {
  std::ofstream(file) << "clock history 1\n";
  fs::permissions(file, fs::perms(0666));
  const support::LogCapture replacing(3, [this](const LogEntry& entry) {
    if (entry.text.find("is open to others") == std::string::npos) return;
    fs::remove(file);
    EXPECT_EQ(::mkfifo(file.c_str(), 0600), 0);
  });
  ::alarm(30);  // a read that waits cannot be ended otherwise
  writeChange();
  ::alarm(0);
  EXPECT_TRUE(log.hasPart("cannot be read: Resource temporarily unavailable")) << log.text();
}

}  // namespace
}  // namespace host
