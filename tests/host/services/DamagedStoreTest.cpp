// Settings databases that are damaged.
#include <gtest/gtest.h>

#include "host/services/StoreFaults.h"
#include "host/services/StoreFile.h"
#include "host/services/StoredSettings.h"

namespace host {
namespace {

namespace fs = std::filesystem;

TEST_F(StoredSettings, SecondDamagedFileGetsTheNextName) {
  writeBytes(file(), "first");
  EXPECT_EQ(openingError(), "");
  writeBytes(file(), "second");
  EXPECT_EQ(openingError(), "");
  EXPECT_EQ(support::contentOf(aside(1)), "first");
  EXPECT_EQ(support::contentOf(aside(2)), "second");
}

// The check of the pages reports a lack of memory as damage, and is repeated.
TEST_F(StoredSettings, AreNotTakenForDamagedWhenAStatementHasNoMemory) {
  saveOne();
  bool ranOut = true;
  for (int nth = 1; ranOut; ++nth) {
    const FailingAllocation fault(nth);
    static_cast<void>(openingError());
    ranOut = FailingAllocation::failed();
    ASSERT_FALSE(log.hasPart("out of memory")) << nth << ": " << log.text();
  }
  EXPECT_FALSE(fs::exists(aside(1)));
}

struct Damage {
  const char* name;
  void (*apply)(const fs::path& file);
};

void PrintTo(const Damage& damage, std::ostream* out) {
  *out << damage.name;
}

void keepBytes(const fs::path& file, std::size_t length) {
  writeBytes(file, support::contentOf(file).substr(0, length));
}

const Damage kDamages[] = {
    {"empty", [](const fs::path& file) { writeBytes(file, ""); }},
    {"text", [](const fs::path& file) { writeBytes(file, "DateFormat=2\n"); }},
    {"random", [](const fs::path& file) { writeBytes(file, randomBytes(20'000)); }},
    {"cut in the header", [](const fs::path& file) { keepBytes(file, 60); }},
    {"cut in the first page", [](const fs::path& file) { keepBytes(file, 3000); }},
    {"cut after the first page", [](const fs::path& file) { keepBytes(file, 4096); }},
    {"random second page",
     [](const fs::path& file) {
       writeBytes(file, support::contentOf(file).substr(0, 4096) + randomBytes(4096));
     }},
    {"without its table",
     [](const fs::path& file) { ASSERT_EQ(runSql(file, "DROP TABLE settings"), ""); }},
    {"with a table without its key",
     [](const fs::path& file) {
       ASSERT_EQ(
           runSql(file,
                  "DROP TABLE settings; CREATE TABLE settings(schema TEXT, key TEXT, value TEXT)"),
           "");
     }},
    {"of a negative version",
     [](const fs::path& file) { ASSERT_EQ(runSql(file, "PRAGMA user_version=-1"), ""); }},
    {"another program's",
     [](const fs::path& file) {
       fs::remove(file);
       ASSERT_EQ(runSql(file, "CREATE TABLE other(x)"), "");
     }},
};

class DamagedStore : public StoredSettings, public ::testing::WithParamInterface<Damage> {};

TEST_P(DamagedStore, IsSetAsideWithOneLogLineAndReplacedByAnEmptyOne) {
  saveOne();
  GetParam().apply(file());
  const std::string damaged = support::contentOf(file());
  SettingsDatabase store(folder.path());
  EXPECT_FALSE(store.getItem(kSchema, "DateFormat").has_value());
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "1"));
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "1");
  EXPECT_TRUE(support::contentOf(aside(1)) == damaged);
  ASSERT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_EQ(log.entries()[0].level, 2);
  EXPECT_TRUE(log.hasPart("set aside as \"" + aside(1).string() + "\"")) << log.text();
}

INSTANTIATE_TEST_SUITE_P(All, DamagedStore, ::testing::ValuesIn(kDamages));

TEST_F(StoredSettings, WalRestoresADamagedFile) {
  {
    SettingsDatabase store(folder.path());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
    fs::copy_file(file().string() + "-wal", folder / "kept");
  }
  writeBytes(file(), randomBytes(5000));
  fs::rename(folder / "kept", file().string() + "-wal");
  EXPECT_EQ(SettingsDatabase(folder.path()).getItem(kSchema, "DateFormat"), "2");
}

TEST_F(StoredSettings, EmptyFileIsSetAsideTogetherWithItsWal) {
  const std::string logFile = file().string() + "-wal";
  std::string logBytes;
  {
    SettingsDatabase store(folder.path());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
    logBytes = support::contentOf(logFile);
  }
  writeBytes(file(), "");
  writeBytes(logFile, logBytes);
  EXPECT_FALSE(SettingsDatabase(folder.path()).getItem(kSchema, "DateFormat").has_value());
  EXPECT_TRUE(support::contentOf(aside(1).string() + "-wal") == logBytes);
}

TEST_F(StoredSettings, DamagedFileWithADamagedWalIsSetAside) {
  writeBytes(file(), randomBytes(5000));
  writeBytes(file().string() + "-wal", randomBytes(5000));
  SettingsDatabase store(folder.path());
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
  EXPECT_EQ(support::contentOf(aside(1)), randomBytes(5000));
}

TEST_F(StoredSettings, NewFileGetsItsNameWithItsFirstPage) {
  const std::string unfinished = file().string() + ".new";
  fs::create_directory(unfinished);
  EXPECT_EQ(openingError(), "store \"" + file().string() + "\" cannot be written: File exists");
  EXPECT_FALSE(fs::exists(file()));
  fs::remove(unfinished);
  writeBytes(unfinished, "of a start that was killed");
  saveOne();
  EXPECT_FALSE(fs::exists(unfinished));
  EXPECT_EQ(log.text(), "");
}

TEST_F(StoredSettings, NewFileIsSyncedWithItsFirstPageBeforeItGetsItsName) {
  const WatchedRename rename(false);
  EXPECT_EQ(openingError(), "");
  EXPECT_GE(rename.size(), 512U);
  EXPECT_GE(rename.syncs(), 1U);
}

TEST_F(StoredSettings, NewFileThatCannotGetItsNameIsRemoved) {
  {
    const WatchedRename rename(true);
    EXPECT_EQ(openingError(),
              "store \"" + file().string() + "\" cannot be written: Input/output error");
  }
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_EQ(openingError(), "");
}

TEST_F(StoredSettings, LinkToAMissingFileIsRefusedAndKept) {
  fs::create_symlink(folder / "unmounted" / "settings.db", file());
  EXPECT_EQ(openingError(), "store \"" + file().string() +
                                "\" is a link to a missing file; mount its folder or remove it");
  EXPECT_TRUE(fs::is_symlink(file()));
}

TEST_F(StoredSettings, NewFileIgnoresTheWalOfARemovedOne) {
  {
    SettingsDatabase store(folder.path());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
    fs::copy_file(file().string() + "-wal", folder / "kept");
  }
  fs::remove(file());
  fs::rename(folder / "kept", file().string() + "-wal");
  EXPECT_FALSE(SettingsDatabase(folder.path()).getItem(kSchema, "DateFormat").has_value());
  EXPECT_EQ(log.text(), "");
}

}  // namespace
}  // namespace host
