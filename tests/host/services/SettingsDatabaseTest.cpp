#include "services/SettingsDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "host/services/StoreFaults.h"
#include "host/services/StoreFile.h"
#include "host/services/StoredSettings.h"

namespace host {
namespace {

using ::testing::HasSubstr;

namespace fs = std::filesystem;

TEST_F(StoredSettings, KeepsTheLastValueOfEachKeyOfEachSchema) {
  SettingsDatabase store(folder.path());
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
  EXPECT_TRUE(store.setItem(kSchema, "TimeFormat", ""));
  EXPECT_TRUE(store.setItem("Other", "DateFormat", "9"));
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "2");
  EXPECT_EQ(store.getItem(kSchema, "TimeFormat"), "");
  EXPECT_EQ(store.getItem("Other", "DateFormat"), "9");
  EXPECT_FALSE(store.getItem("Other", "TimeFormat").has_value());
  EXPECT_EQ(log.text(), "");
}

TEST_F(StoredSettings, KeepsAnyBytes) {
  const std::string value = std::string("a\0b\xff\xfe <&>'\"\n", 12) + std::string(1 << 20, '\xc3');
  SettingsDatabase store(folder.path());
  EXPECT_TRUE(store.setItem(kSchema, std::string("k\0'", 3), value));
  EXPECT_TRUE(store.getItem(kSchema, std::string("k\0'", 3)) == value);
  EXPECT_FALSE(store.getItem(kSchema, "k").has_value());
}

TEST_F(StoredSettings, FailedWriteIsRefusedAndLoggedAndKeepsTheOldValue) {
  SettingsDatabase store(folder.path());
  ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
  for (const int error : {ENOSPC, EIO}) {
    log.clear();
    {
      const FailingWrites fault(error);
      EXPECT_FALSE(store.setItem(kSchema, "DateFormat", "2"));
    }
    EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "1");
    EXPECT_TRUE(log.hasPart("settings.db\": writing failed: ")) << log.text();
    EXPECT_EQ(log.entries().size(), 1U);
  }
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "3"));
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "3");
}

TEST_F(StoredSettings, FailedSyncIsRefusedWithTheSystemsReason) {
  SettingsDatabase store(folder.path());
  ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
  const support::LogCapture all(5);
  {
    const FailingSyncs fault;
    EXPECT_FALSE(store.setItem(kSchema, "DateFormat", "2"));
  }
  EXPECT_TRUE(all.hasPart(" (5) full_fsync(" + file().string() + "-wal)")) << all.text();
  EXPECT_TRUE(log.hasPart("\": writing failed: disk I/O error")) << log.text();
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "1");
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "3"));
}

TEST_F(StoredSettings, WalThatIsCutAnywhereYieldsAWrittenValue) {
  SettingsDatabase store(folder.path());
  for (const char* const value : {"1", "2", "3"}) {
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", value));
  }
  const std::string main = support::contentOf(file());
  const std::string wal = support::contentOf(file().string() + "-wal");
  ASSERT_FALSE(wal.empty());
  for (std::size_t length = 0; length <= wal.size(); length += 512) {
    const support::TemporaryFolder cut;
    writeBytes(cut / "settings.db", main);
    writeBytes(cut / "settings.db-wal", wal.substr(0, length));
    SettingsDatabase after(cut.path());
    const std::string value = after.getItem(kSchema, "DateFormat").value_or("none");
    EXPECT_TRUE(value == "none" || value == "1" || value == "2" || value == "3") << value;
    EXPECT_TRUE(log.entries().empty()) << "cut at " << length << '\n' << log.text();
  }
}

TEST_F(StoredSettings, IsThreadSafe) {
  SettingsDatabase store(folder.path());
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, key = std::to_string(i)] {
      for (int round = 0; round < 20; ++round) {
        const std::string value = std::to_string(round);
        if (!store.setItem(kSchema, key, value) || store.getItem(kSchema, key) != value) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(StoredSettings, IsForItsOwnerOnly) {
  const fs::path state = folder / "a" / "b";
  const SettingsDatabase store(state);
  EXPECT_EQ(fs::status(state).permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(state / "settings.db").permissions(), kOwnerFile);
}

TEST_F(StoredSettings, IsTightenedToItsOwner) {
  saveOne();
  const fs::path wal = file().string() + "-wal";
  writeBytes(wal, "");
  for (const fs::path& part : {file(), wal}) fs::permissions(part, fs::perms(0644));
  SettingsDatabase store(folder.path());
  ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
  for (const fs::path& part : {file(), wal}) {
    EXPECT_EQ(fs::status(part).permissions(), kOwnerFile) << part;
    EXPECT_TRUE(log.has("\"" + part.string() + "\" is open to others (mode 0644): changed to 0600"))
        << log.text();
  }
}

TEST_F(StoredSettings, OfAnotherUserKeepsItsMode) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  saveOne();
  fs::permissions(file(), fs::perms(0644));
  ASSERT_EQ(chown(file().c_str(), 12345, 12345), 0);
  EXPECT_EQ(openingError(), "");
  EXPECT_EQ(fs::status(file()).permissions(), fs::perms(0644));
  EXPECT_TRUE(log.hasPart("it cannot be changed to 0600: Operation not permitted")) << log.text();
}

// SQLite alone would go on writing into unlinked files.
TEST_F(StoredSettings, RefusesSetsWhileItsFolderIsMissing) {
  const fs::path state = folder / "state";
  SettingsDatabase store(state);
  ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
  fs::rename(state, folder / "away");
  EXPECT_FALSE(store.setItem(kSchema, "DateFormat", "2"));
  EXPECT_TRUE(log.has(2, "store \"" + (state / "settings.db").string() +
                             "\": writing failed: its file was removed or replaced"))
      << log.text();
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "1");
  fs::rename(folder / "away", state);
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "3"));
  fs::remove_all(state);
  EXPECT_FALSE(store.setItem(kSchema, "DateFormat", "4"));
}

TEST_F(StoredSettings, SecondHostOnTheSameFolderIsRefused) {
  const SettingsDatabase store(folder.path());
  EXPECT_EQ(openingError(), "store \"" + file().string() + "\" is in use by another host");
}

TEST_F(StoredSettings, NewerVersionIsRefusedAndLeftAlone) {
  saveOne();
  ASSERT_EQ(runSql(file(), "PRAGMA user_version=7"), "");
  EXPECT_EQ(openingError(),
            "store \"" + file().string() + "\" is of version 7, newer than this program's 1");
  EXPECT_FALSE(fs::exists(aside(1)));
  ASSERT_EQ(runSql(file(), "PRAGMA user_version=1"), "");
  EXPECT_EQ(SettingsDatabase(folder.path()).getItem(kSchema, "DateFormat"), "2");
}

TEST_F(StoredSettings, FileInPlaceOfTheFolderIsRefused) {
  writeBytes(folder / "state", "not a folder");
  for (const fs::path& state : {folder / "state", folder / "state" / "below"}) {
    const std::string error = errorOf([&] { const SettingsDatabase store(state); });
    EXPECT_THAT(error, HasSubstr(state.string()));
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
}

TEST_F(StoredSettings, RefusesAnythingButARegularFileUntouched) {
  saveOne();
  for (const char* const part : {"-wal", "-shm", "-journal", ""}) {
    const fs::path place = file().string() + part;
    const std::function<void()> others[] = {
        [&] { fs::create_directory(place); },
        [&] { ASSERT_EQ(mkfifo(place.c_str(), 0644), 0); },
        [&] { fs::create_symlink(folder.path(), place); },
    };
    for (const auto& put : others) {
      fs::remove(place);
      put();
      const fs::perms before = fs::status(place).permissions();
      EXPECT_EQ(openingError(), "\"" + place.string() + "\" is not a regular file; remove it");
      EXPECT_EQ(fs::status(place).permissions(), before);
    }
    fs::remove(place);
  }
  EXPECT_EQ(log.text(), "");
}

TEST_F(StoredSettings, FullDiskAtTheStartIsRefusedAndLeavesNoDamage) {
  {
    const FailingWrites fault(ENOSPC);
    EXPECT_THAT(openingError(), HasSubstr("cannot be written"));
  }
  EXPECT_EQ(openingError(), "");
  EXPECT_TRUE(log.entries().empty()) << log.text();
}

TEST_F(StoredSettings, ReadThatFailsOnceIsNotTakenForDamage) {
  saveOne();
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    const FailingRead fault(nth);
    const std::string error = openingError();
    if (!FailingRead::failed()) break;
    EXPECT_TRUE(!error.empty() || log.hasPart("second attempt")) << log.text();
    SettingsDatabase store(folder.path());
    EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "2");
    log.clear();
  }
  EXPECT_FALSE(fs::exists(aside(1)));
}

TEST_F(StoredSettings, FailedCheckpointAtTheEndIsLoggedAndLosesNothing) {
  std::optional<FailingWrites> fault;
  {
    SettingsDatabase store(folder.path());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
    fault.emplace(EIO);
  }
  fault.reset();
  ASSERT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(log.hasPart("settings.db\": checkpoint failed: ")) << log.text();
  SettingsDatabase store(folder.path());
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "1");
}

}  // namespace
}  // namespace host
