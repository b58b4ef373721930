// The file in which older software kept the fallback time: read once at start-up, then deleted.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

#include "DevicePaths.h"
#include "ManageableData.h"
#include "support/LogCapture.h"
#include "support/Telephone.h"

namespace {

constexpr const char* kSaved = "2020-05-05T17:18:19+00:00";
constexpr const char* kInFile = "2024-02-29T01:02:03+00:00";

// A telephone with a saved time, not switched on yet.
class ClockWithFallbackFile : public testing::Test {
 protected:
  ClockWithFallbackFile() {
    telephone.store("FallbackDateTime", kSaved);
    std::filesystem::create_directories(file().parent_path());
  }
  ~ClockWithFallbackFile() override { std::filesystem::remove_all(file()); }
  ClockWithFallbackFile(const ClockWithFallbackFile&) = delete;
  ClockWithFallbackFile& operator=(const ClockWithFallbackFile&) = delete;

  static std::filesystem::path file() { return DevicePaths::kFallbackTimeFile; }
  static void write(const std::string& content) {
    std::ofstream(file(), std::ios::binary) << content;
  }
  std::string timeAfterStart() {
    telephone.switchOn();
    return telephone.service().getUTCTime(0);
  }

  support::Telephone telephone;
  support::LogCapture log{5};
};

TEST_F(ClockWithFallbackFile, UsesTheStoredTimeWithoutAFile) {
  EXPECT_EQ(timeAfterStart(), kSaved);
  EXPECT_TRUE(log.has(5, std::string("init: initial FallbackTime is \"") + kSaved + "\""));
}

TEST_F(ClockWithFallbackFile, StoresATokenOf25CharactersInTheSettings) {
  write(kInFile);
  EXPECT_EQ(timeAfterStart(), kInFile);
  EXPECT_EQ(telephone.stored("FallbackDateTime"), kInFile);
  EXPECT_FALSE(std::filesystem::exists(file()));
  EXPECT_TRUE(log.has(5, std::string("restoreFallbackTime: time \"") + kInFile + "\" from file \"" +
                             file().string() + "\""));
}

TEST_F(ClockWithFallbackFile, ReadsTheFirstTokenOnly) {
  for (const char end : {' ', '\t', '\n', '\v', '\f', '\r', '\0'}) {
    write(std::string("\n \t\v\f\r") + kInFile + end + "and more\n");
    EXPECT_EQ(timeAfterStart(), kInFile) << static_cast<int>(end);
    telephone.switchOff();
    telephone.store("FallbackDateTime", kSaved);
  }
}

TEST_F(ClockWithFallbackFile, IgnoresAndDeletesAnyOtherContent) {
  const std::string rows[] = {"",
                              "\n\n  \n",
                              "2024-02-29T01:02:03+00:0",
                              "2024-02-29T01:02:03+00:000",
                              "2024-02-29 01:02:03+00:00",
                              std::string(127, 'x'),
                              std::string(128, 'x'),
                              std::string(PIPE_BUF - 25, ' ') + std::string(26, 'x'),
                              std::string(1 << 20, 'x'),
                              std::string("\0", 1)};
  for (const std::string& content : rows) {
    write(content);
    EXPECT_EQ(timeAfterStart(), kSaved) << content.substr(0, 130);
    EXPECT_EQ(telephone.stored("FallbackDateTime"), kSaved) << content.substr(0, 130);
    EXPECT_FALSE(std::filesystem::exists(file())) << content.substr(0, 130);
    telephone.switchOff();
  }
  EXPECT_FALSE(log.hasPart("restoreFallbackTime"));
}

TEST_F(ClockWithFallbackFile, StoresAnInvalidTimeOf25CharactersWithoutSettingTheClock) {
  write(std::string(25, 'x'));
  telephone.jump("2001-01-01T00:00:00");
  EXPECT_EQ(timeAfterStart(), "2001-01-01T00:00:00+00:00");
  EXPECT_EQ(telephone.stored("FallbackDateTime"), std::string(25, 'x'));
}

// A pipe without a writer does not block the start, and neither does an endless device.
TEST_F(ClockWithFallbackFile, DeletesAFolderAPipeOrADeviceInItsPlace) {
  namespace fs = std::filesystem;
  const std::function<void()> replacements[] = {[] { fs::create_directory(file()); },
                                                [] { ASSERT_EQ(mkfifo(file().c_str(), 0600), 0); },
                                                [] { fs::create_symlink("/dev/null", file()); },
                                                [] { fs::create_symlink("/dev/zero", file()); }};
  for (const auto& replace : replacements) {
    replace();
    EXPECT_EQ(timeAfterStart(), kSaved);
    EXPECT_EQ(fs::symlink_status(file()).type(), fs::file_type::not_found);
    telephone.switchOff();
  }
}

TEST_F(ClockWithFallbackFile, StartsWithANonEmptyFolderOrALinkToNowhereInItsPlace) {
  std::filesystem::create_directories(file() / "more");
  EXPECT_EQ(timeAfterStart(), kSaved);
  EXPECT_TRUE(std::filesystem::exists(file() / "more"));
  telephone.switchOff();
  std::filesystem::remove_all(file());
  std::filesystem::create_symlink("nowhere", file());
  EXPECT_EQ(timeAfterStart(), kSaved);
}

TEST_F(ClockWithFallbackFile, ReadsWhatAPipeHoldsWithoutWaitingForMore) {
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  const int writer = open(file().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::write(writer, kInFile, 25), 25);
  EXPECT_EQ(timeAfterStart(), kInFile);
  EXPECT_FALSE(std::filesystem::exists(file()));
  close(writer);
}

// Finds a token that spans two reads, and one at the very end.
TEST_F(ClockWithFallbackFile, SearchesTheFirst16MebibytesForTheToken) {
  constexpr std::size_t kMost = 16 << 20;
  for (const std::size_t blanks : {std::size_t{PIPE_BUF - 10}, kMost - 25}) {
    write(std::string(blanks, ' ') + kInFile + " ");
    EXPECT_EQ(timeAfterStart(), kInFile) << blanks;
    telephone.switchOff();
    telephone.store("FallbackDateTime", kSaved);
  }
  write(std::string(kMost, '\n') + kInFile);
  EXPECT_EQ(timeAfterStart(), kSaved);
  EXPECT_FALSE(std::filesystem::exists(file()));
}

// Drops root's privileges during its lifetime, so that file permissions apply.
class AsNobody {
 public:
  AsNobody() { m_changed = geteuid() == 0 && seteuid(65534) == 0; }
  ~AsNobody() {
    if (m_changed && seteuid(0) != 0) std::abort();
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

 private:
  bool m_changed = false;
};

TEST_F(ClockWithFallbackFile, LeavesAFileThatItMayNotReadAlone) {
  write(kInFile);
  ASSERT_EQ(chmod(file().c_str(), 0), 0);
  for (const char* const folder : {".", "data", "ipc"}) ASSERT_EQ(chmod(folder, 0755), 0);
  ASSERT_EQ(chmod(support::ListenerPipe::path().c_str(), 0644), 0);
  {
    const AsNobody nobody;
    EXPECT_EQ(timeAfterStart(), kSaved);
    ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  }
  EXPECT_TRUE(std::filesystem::exists(file()));
}

// Access to a private member, the names of a record's items: an explicit instantiation may name it.
using Names = std::map<std::string, std::string> ManageableData::*;
Names namesOfItems();
template <Names Member>
struct Opened {
  friend Names namesOfItems() { return Member; }
};
template struct Opened<&ManageableData::m_names>;

// Keeps the last record that is set.
class KeepingManagement final : public host::LocalManagement {
 public:
  bool setData(ManageableData& record) override {
    kept = record;
    return true;
  }
  ManageableData kept;
};

TEST_F(ClockWithFallbackFile, RecordsTheStartUnderItsIdentifierAndName) {
  KeepingManagement management;
  telephone.context.add("LocalMgmtIfc", &management);
  telephone.switchOn();
  std::string time;
  EXPECT_EQ(management.kept.getRootId(), "last-restart-date");
  EXPECT_TRUE(management.kept.interogate("last-restart-date", time));
  EXPECT_EQ(time, kSaved);
  EXPECT_THAT(management.kept.*namesOfItems(),
              testing::ElementsAre(testing::Pair("last-restart-date", "last-restart-date")));
  EXPECT_FALSE(log.hasPart("logStartUpUtc"));
}

}  // namespace
