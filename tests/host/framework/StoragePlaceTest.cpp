// Files that are already there: at a storage's path, and at that of its new file before the rename.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "host/framework/StorageFolder.h"
#include "support/LogCapture.h"

namespace host {
namespace {

TEST_F(StorageFolder, ReplacesTheNewFileOfAKilledProcess) {
  std::ofstream(m_folder / ".file.new") << "half of a much longer conten";
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(content(), "new");
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, DoesNotWriteThroughALink) {
  std::ofstream(m_folder / "precious") << "precious";
  std::filesystem::create_symlink(m_folder / "precious", m_folder / ".file.new");
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(content("precious"), "precious");
  EXPECT_EQ(content(), "new");
}

// Opening a pipe would wait for a reader.
TEST_F(StorageFolder, RemovesAPipeAtTheNewFilesPath) {
  ASSERT_EQ(mkfifo((m_folder / ".file.new").c_str(), 0600), 0);
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(content(), "new");
  EXPECT_EQ(files(), 1U);
}

// A user may have put files into that folder.
TEST_F(StorageFolder, DoesNotRemoveAFolderAtTheNewFilesPath) {
  const support::LogCapture log;
  const std::filesystem::path next = m_folder / ".file.new";
  std::filesystem::create_directories(next / "precious");
  EXPECT_FALSE(replaceContent("new"));
  EXPECT_TRUE(
      log.has("storage \"file\" cannot be written: " + next.string() + " is a folder; remove it"))
      << log.text();
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(std::filesystem::exists(next / "precious"));
}

TEST_F(StorageFolder, RefusesOtherThanRegularFiles) {
  const std::string file = m_folder / "file";
  const std::function<void()> ways[] = {
      [&] { ASSERT_EQ(mkfifo(file.c_str(), 0600), 0); },
      [&] { std::filesystem::create_symlink("/dev/zero", file); },
      [&] { std::filesystem::create_symlink("/etc/passwd", file); },
      [&] { std::filesystem::create_directory(file); },
  };
  for (const auto& put : ways) {
    const support::LogCapture log;
    put();
    EXPECT_FALSE(replaceContent("new"));
    EXPECT_TRUE(
        log.has("storage \"file\" cannot be bound: " + file + " is not a regular file; remove it"))
        << log.text();
    EXPECT_EQ(log.entries().size(), 1U);
    std::filesystem::remove(file);
  }
}

// A sparse file, too large for the memory.
TEST_F(StorageFolder, ReplacesALargeFileWithoutReadingIt) {
  write("x");
  constexpr std::uintmax_t kMost = std::numeric_limits<off_t>::max();
  rlimit allowed{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &allowed), 0);
  std::filesystem::resize_file(m_folder / "file",
                               std::min<std::uintmax_t>({kMost, 1ULL << 40U, allowed.rlim_cur}));
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(content(), "new");
}

TEST_F(StorageFolder, DoesNotAppendToALargeFile) {
  const support::LogCapture log;
  write(std::string(64 * 1024, 'x'));
  Storage storage;
  ASSERT_TRUE(init(storage));
  EXPECT_TRUE(store(storage, "y"));
  write(std::string(64 * 1024 + 1, 'x'));
  ASSERT_TRUE(init(storage));
  EXPECT_FALSE(store(storage, "y"));
  EXPECT_TRUE(log.has("storage \"file\" cannot be read: File too large")) << log.text();
}

TEST_F(StorageFolder, MakesAFileWritableForItsOwnerOnly) {
  const support::LogCapture log;
  const std::string file = m_folder / "file";
  write("same");
  ASSERT_EQ(chmod(file.c_str(), 0666), 0);
  EXPECT_TRUE(replaceContent("same"));
  EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0644));
  EXPECT_TRUE(log.has("\"" + file + "\" is open to others (mode 0666): changed to 0644"))
      << log.text();
}

}  // namespace
}  // namespace host
