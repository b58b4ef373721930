#include "Storage.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <thread>

#include "host/framework/StorageFolder.h"
#include "interpose/DeviceRoot.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace host {
namespace {

TEST_F(StorageFolder, GetsAFile) {
  EXPECT_TRUE(replaceContent("new\n"));
  EXPECT_EQ(content(), "new\n");
  EXPECT_EQ(files(), 1U) << "nothing else stays";
}

TEST_F(StorageFolder, GetsTheNewContentForTheOld) {
  write("a much longer old content");
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(content(), "new");
}

TEST_F(StorageFolder, KeepsAnyBytes) {
  const std::string bytes("\0\n\r\xFF<", 5);
  EXPECT_TRUE(replaceContent(bytes));
  EXPECT_EQ(content(), bytes);
  EXPECT_TRUE(replaceContent(""));
  EXPECT_EQ(content(), "");
}

TEST_F(StorageFolder, ShowsTheOldContentUntilShutdown) {
  write("old");
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  ASSERT_TRUE(storage.clear());
  ASSERT_TRUE(store(storage, "new"));
  EXPECT_EQ(content(), "old");
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(content(), "new");
}

TEST_F(StorageFolder, KeepsTheOldContentWithoutShutdown) {
  write("old");
  {
    Storage storage;
    ASSERT_TRUE(storage.init("file", kRead, kWrite));
    ASSERT_TRUE(storage.clear());
    ASSERT_TRUE(store(storage, "new"));
  }
  EXPECT_EQ(content(), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, GetsMoreContentWithoutClear) {
  write("old ");
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  EXPECT_TRUE(store(storage, "and "));
  EXPECT_TRUE(store(storage, "new"));
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(content(), "old and new");
}

TEST_F(StorageFolder, IsLeftAloneWhenNothingWasChanged) {
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(files(), 0U);
}

// Whoever opened the file before goes on reading the old one, whole.
TEST_F(StorageFolder, IsLeftAloneWhenTheContentIsThereAlready) {
  ASSERT_TRUE(replaceContent("same"));
  const auto file = fileNumber();
  EXPECT_TRUE(replaceContent("same"));
  EXPECT_EQ(fileNumber(), file);
  EXPECT_TRUE(replaceContent("sama"));
  EXPECT_NE(fileNumber(), file);
}

TEST_F(StorageFolder, GetsAnEmptyFileWhereThereIsNone) {
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite) && storage.clear() && storage.shutdown());
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, GetsTheNewFileInOneStep) {
  write("old content");
  std::ifstream reader;
  reader.rdbuf()->pubsetbuf(nullptr, 0);  // each read asks the file
  reader.open(m_folder / "file");
  std::string word;
  reader >> word;
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(word, "old");
  reader >> word;
  EXPECT_EQ(word, "content");
}

TEST_F(StorageFolder, IsReadableForOthers) {
  EXPECT_TRUE(replaceContent("new"));
  struct stat status {};
  ASSERT_EQ(stat((m_folder / "file").c_str(), &status), 0);
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(status.st_mode & 0777U, 0644U & ~mask);
}

TEST_F(StorageFolder, TakesOnlyNamesWithoutAFolder) {
  for (const char* const name : {"", ".", "..", "/", "a/b", "/etc/passwd", "../file"}) {
    Storage storage;
    EXPECT_FALSE(storage.init(name, kRead, kWrite)) << name;
    EXPECT_FALSE(storage.shutdown());
  }
  Storage storage;
  EXPECT_FALSE(storage.init(nullptr, kRead, kWrite));
}

TEST_F(StorageFolder, TakesOnlyWhatCanBeAFile) {
  const support::LogCapture log;
  std::filesystem::create_directory(m_folder / "file");
  Storage storage;
  EXPECT_FALSE(storage.init("file", kRead, kWrite));
  EXPECT_TRUE(log.hasPart("storage \"file\" cannot be bound")) << log.text();
}

TEST_F(StorageFolder, MustBeThere) {
  Storage storage;
  host::setStorageFolder(m_folder / "none");
  EXPECT_FALSE(storage.init("file", kRead, kWrite));
  host::setStorageFolder("");
  EXPECT_FALSE(storage.init("file", kRead, kWrite));
}

TEST_F(StorageFolder, RefusesAllWithoutInit) {
  Storage storage;
  EXPECT_FALSE(storage.clear());
  EXPECT_FALSE(store(storage, "x"));
  EXPECT_FALSE(storage.shutdown());
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  EXPECT_TRUE(storage.shutdown());
  EXPECT_FALSE(store(storage, "x")) << "unbound again";
  EXPECT_FALSE(storage.shutdown());
}

TEST_F(StorageFolder, RefusesWhatCannotBeStored) {
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  char byte = 'x';
  EXPECT_FALSE(storage.store(nullptr, &byte, -1));
  EXPECT_FALSE(storage.store(nullptr, nullptr, 1));
  EXPECT_FALSE(storage.store("part", &byte, 1)) << "there are no parts";
  EXPECT_TRUE(storage.store(nullptr, nullptr, 0));
}

TEST_F(StorageFolder, KeepsTheOldContentWhenTheFolderIsGone) {
  const support::LogCapture log;
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  ASSERT_TRUE(store(storage, "new"));
  std::filesystem::remove_all(m_folder.path());
  EXPECT_FALSE(storage.shutdown());
  EXPECT_TRUE(log.hasPart("storage \"file\" cannot be written")) << log.text();
}

TEST_F(StorageFolder, KeepsTheOldContentWhenThePlaceIsTaken) {
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  ASSERT_TRUE(store(storage, "new"));
  std::filesystem::create_directories(m_folder.path() / "file" / "in it");
  EXPECT_FALSE(storage.shutdown());
  EXPECT_EQ(files(), 1U) << "the file on its way is gone again";
}

// The write itself fails, half way, as on a full disk.
TEST_F(StorageFolder, KeepsTheOldContentWhenTheDiskIsFull) {
  write("old");
  Storage storage;
  ASSERT_TRUE(storage.init("file", kRead, kWrite));
  ASSERT_TRUE(storage.clear());
  ASSERT_TRUE(store(storage, std::string(100'000, 'x')));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{4096, before.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const bool replaced = storage.shutdown();
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(replaced);
  EXPECT_EQ(content(), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(StorageFolder, StaysWholeUnderManyWriters) {
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

TEST_F(StorageFolder, LosesAFileThatIsDeleted) {
  write("text");
  EXPECT_TRUE(Storage::deleteFile_noEx(m_folder / "file"));
  EXPECT_EQ(files(), 0U);
  EXPECT_TRUE(Storage::deleteFile_noEx(m_folder / "file")) << "it is not there";
  std::filesystem::create_directories(m_folder / "folder/more");
  EXPECT_FALSE(Storage::deleteFile_noEx(m_folder / "folder")) << "it is not empty";
  EXPECT_TRUE(Storage::deleteFile_noEx(m_folder / "folder/more"));
  EXPECT_TRUE(Storage::deleteFile_noEx(m_folder / "folder"));
  write("text");
  EXPECT_FALSE(Storage::deleteFile_noEx(m_folder.path() / "file" / "below")) << "nor is this one";
}

TEST_F(StorageFolder, KeepsAFileWhoseNameTakesMemoryThatThereIsNot) {
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

TEST_F(StorageFolder, DeletesDeviceFilesBelowTheRoot) {
  std::filesystem::create_directory(m_folder / "data");
  std::ofstream(m_folder.path() / "data" / "once.txt") << "x";
  host::setDeviceRoot(m_folder.path());
  EXPECT_TRUE(Storage::deleteFile_noEx("/data/once.txt"));
  host::setDeviceRoot("");
  EXPECT_FALSE(std::filesystem::exists(m_folder.path() / "data" / "once.txt"));
}

}  // namespace
}  // namespace host
