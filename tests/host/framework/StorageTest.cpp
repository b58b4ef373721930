#include "Storage.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <thread>

#include "host/framework/StorageFolder.h"
#include "interpose/DeviceRoot.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

TEST_F(StorageFolder, GetsNoFileWithoutAChangeAndAnEmptyOneAfterClear) {
  Storage storage;
  ASSERT_TRUE(init(storage));
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(files(), 0U);
  ASSERT_TRUE(init(storage) && storage.clear() && storage.shutdown());
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, DoesNotReplaceAFileWithTheSameContent) {
  ASSERT_TRUE(replaceContent("same"));
  const auto file = fileNumber();
  EXPECT_TRUE(replaceContent("same"));
  EXPECT_EQ(fileNumber(), file);
  EXPECT_TRUE(replaceContent("sama"));
  EXPECT_NE(fileNumber(), file);
}

TEST_F(StorageFolder, MakesTheFileReadableForOthers) {
  EXPECT_TRUE(replaceContent("new"));
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(std::filesystem::status(m_folder / "file").permissions(),
            std::filesystem::perms(0644U & ~mask));
}

TEST_F(StorageFolder, NeedsAName) {
  Storage storage;
  EXPECT_FALSE(init(storage, nullptr));
}

TEST_F(StorageFolder, MustExist) {
  Storage storage;
  host::setStorageFolder(m_folder / "none");
  EXPECT_FALSE(init(storage));
  host::setStorageFolder("");
  EXPECT_FALSE(init(storage));
}

TEST_F(StorageFolder, RefusesInvalidData) {
  Storage storage;
  ASSERT_TRUE(init(storage));
  char byte = 'x';
  EXPECT_FALSE(storage.store(nullptr, &byte, -1));
  EXPECT_FALSE(storage.store(nullptr, nullptr, 1));
  EXPECT_FALSE(storage.store("part", &byte, 1)) << "there are no parts";
  EXPECT_TRUE(storage.store(nullptr, nullptr, 0));
}

TEST_F(StorageFolder, ReportsAFolderThatWasRemoved) {
  const support::LogCapture log;
  Storage storage;
  ASSERT_TRUE(init(storage));
  ASSERT_TRUE(store(storage, "new"));
  std::filesystem::remove_all(m_folder.path());
  EXPECT_FALSE(storage.shutdown());
  EXPECT_TRUE(log.hasPart("storage \"file\" cannot be written")) << log.text();
}

TEST_F(StorageFolder, LeavesNoFileWhenItCannotBeRenamed) {
  Storage storage;
  ASSERT_TRUE(init(storage));
  ASSERT_TRUE(store(storage, "new"));
  std::filesystem::create_directories(m_folder.path() / "file" / "in it");
  EXPECT_FALSE(storage.shutdown());
  EXPECT_EQ(files(), 1U) << "the new file is removed";
}

// The write fails half way.
TEST_F(StorageFolder, KeepsTheOldContentWhenTheDiskIsFull) {
  write("old");
  Storage storage;
  ASSERT_TRUE(prepare(storage, std::string(100'000, 'x')));
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  {
    const support::SoftLimit small(RLIMIT_FSIZE, 4096);
    EXPECT_FALSE(storage.shutdown());
  }
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(content(), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, HasOneWholeContentAfterManyWriters) {
  const auto writeOften = [](char fill) {
    for (int i = 0; i < 25; ++i) EXPECT_TRUE(replaceContent(std::string(5000, fill)));
  };
  std::thread one(writeOften, 'a');
  std::thread two(writeOften, 'b');
  one.join();
  two.join();
  const std::string last = content();
  EXPECT_TRUE(last == std::string(5000, 'a') || last == std::string(5000, 'b')) << last.size();
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, DoesNotDeleteBelowAFile) {
  write("text");
  EXPECT_FALSE(Storage::deleteFile_noEx(m_folder.path() / "file" / "below"))
      << "a file is not a folder";
}

TEST_F(StorageFolder, DoesNotDeleteAFileWithoutMemoryForItsPath) {
  write("text");
  const std::string path = m_folder / "file";
  bool deleted = true;
  {
    const support::NoMemory none;
    deleted = Storage::deleteFile_noEx(path);
  }
  EXPECT_FALSE(deleted);
  EXPECT_EQ(content(), "text");
}

TEST_F(StorageFolder, DeletesDeviceFilesBelowTheDeviceRoot) {
  std::filesystem::create_directory(m_folder / "data");
  std::ofstream(m_folder.path() / "data" / "once.txt") << "x";
  host::setDeviceRoot(m_folder.path());
  EXPECT_TRUE(Storage::deleteFile_noEx("/data/once.txt"));
  host::setDeviceRoot("");
  EXPECT_FALSE(std::filesystem::exists(m_folder.path() / "data" / "once.txt"));
}

}  // namespace
}  // namespace host
