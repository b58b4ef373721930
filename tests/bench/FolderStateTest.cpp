#include "FolderState.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/TemporaryFolder.h"

namespace {

using bench::FolderState;

class FolderStateOf : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& text) const {
    std::ofstream(m_folder / name) << text;
  }
  [[nodiscard]] FolderState now() const { return FolderState(m_folder.path()); }
  [[nodiscard]] std::string changeSince(const FolderState& before) const {
    return now().changeSince(before);
  }

  const support::TemporaryFolder m_folder;
};

TEST_F(FolderStateOf, UntouchedFilesIsTheSame) {
  write("keys", "one");
  EXPECT_EQ(changeSince(now()), "");
}

TEST_F(FolderStateOf, ANewFileTellsIt) {
  const FolderState before = now();
  write("keys", "one");
  EXPECT_EQ(changeSince(before), (m_folder / "keys").string());
}

TEST_F(FolderStateOf, AFileThatIsGoneTellsIt) {
  write("keys", "one");
  const FolderState before = now();
  std::filesystem::remove(m_folder / "keys");
  EXPECT_EQ(changeSince(before), (m_folder / "keys").string());
}

TEST_F(FolderStateOf, ALongerFileTellsIt) {
  write("keys", "one");
  const FolderState before = now();
  write("keys", "one and two");
  EXPECT_EQ(changeSince(before), (m_folder / "keys").string());
}

TEST_F(FolderStateOf, AFileWrittenAgainTellsIt) {
  write("keys", "one");
  const auto file = m_folder / "keys";
  std::filesystem::last_write_time(file, std::filesystem::file_time_type{});
  const FolderState before = now();
  write("keys", "two");
  EXPECT_EQ(changeSince(before), file.string());
}

TEST_F(FolderStateOf, AReplacedFileTellsIt) {
  write("keys", "one");
  write("spare", "one");
  for (const char* const name : {"keys", "spare"}) {
    std::filesystem::last_write_time(m_folder / name, std::filesystem::file_time_type{});
  }
  const FolderState before = now();
  std::filesystem::rename(m_folder / "spare", m_folder / "keys");
  EXPECT_EQ(changeSince(before), (m_folder / "keys").string());
}

TEST_F(FolderStateOf, DatabasesIsLeftToTheirOwnCounts) {
  const FolderState before = now();
  write("settings.db", "one");
  write("settings.db-wal", "one");
  EXPECT_EQ(changeSince(before), "");
}

}  // namespace
