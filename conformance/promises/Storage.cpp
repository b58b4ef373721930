#include "Storage.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Promise.h"

namespace {

namespace fs = std::filesystem;

class StoragePromise : public conformance::Promise {
 protected:
  fs::path file() { return platform().storageFolder() / "file"; }
  std::string content() { return conformance::contentOf(file()); }
  void write(const std::string& text) { std::ofstream(file(), std::ios::binary) << text; }

  static bool init(Storage& storage, const char* name = "file") {
    return storage.init(name, std::ios_base::in | std::ios_base::binary,
                        std::ios_base::out | std::ios_base::binary);
  }
  static bool store(Storage& storage, std::string text) {
    return storage.store(nullptr, text.data(), static_cast<int>(text.size()));
  }
  // The new content, up to the shutdown.
  static bool prepare(Storage& storage, const std::string& text) {
    return init(storage) && storage.clear() && store(storage, text);
  }
  static bool replaceContent(const std::string& text) {
    Storage storage;
    return prepare(storage, text) && storage.shutdown();
  }
};

TEST_F(StoragePromise, KeepsTheStoredBytes) {
  promises("Replaces the file's content by the new one, and unbinds.");
  for (const std::string& bytes :
       {std::string("a much longer old content"), std::string("\0\n\r\xFF<", 5), std::string()}) {
    write("old");
    EXPECT_TRUE(replaceContent(bytes));
    EXPECT_EQ(content(), bytes);
    EXPECT_TRUE(fs::exists(file()));
  }
}

TEST_F(StoragePromise, CreatesTheFile) {
  promises("A named file in the device's persistent area");
  EXPECT_TRUE(replaceContent("new"));
  platform().restart();
  EXPECT_EQ(content(), "new");
}

TEST_F(StoragePromise, ChangesTheFileAtShutdownOnly) {
  promises("The file changes in one step, at shutdown");
  write("old");
  Storage storage;
  ASSERT_TRUE(prepare(storage, "new"));
  EXPECT_EQ(content(), "old");
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(content(), "new");
}

// Another program opened the script before, and reads it meanwhile.
TEST_F(StoragePromise, ReaderSeesTheOldContentOrTheNewOne) {
  promises("a reader sees the old content or the new one.");
  write("old content");
  std::ifstream reader;
  reader.rdbuf()->pubsetbuf(nullptr, 0);  // unbuffered: each read reads the file
  reader.open(file());
  std::string word;
  reader >> word;
  EXPECT_TRUE(replaceContent("new"));
  EXPECT_EQ(word, "old");
  reader >> word;
  EXPECT_EQ(word, "content");
}

TEST_F(StoragePromise, DropsTheNewContentWithoutShutdown) {
  promises("without shutdown, the new content is dropped");
  write("old");
  {
    Storage dropped;
    ASSERT_TRUE(prepare(dropped, "new"));
  }
  EXPECT_EQ(content(), "old");
}

TEST_F(StoragePromise, LeavesNoOtherFile) {
  promises("The file changes in one step");
  const auto files = [this] {
    const fs::directory_iterator entries(platform().storageFolder());
    return std::distance(begin(entries), end(entries));
  };
  const auto before = files();
  EXPECT_TRUE(replaceContent("new"));
  {
    Storage dropped;
    ASSERT_TRUE(prepare(dropped, "newer"));
  }
  EXPECT_EQ(files(), before + 1);
}

TEST_F(StoragePromise, AppendsWithoutClear) {
  promises("Appends `length` bytes.");
  write("old ");
  Storage storage;
  ASSERT_TRUE(init(storage));
  EXPECT_TRUE(store(storage, "and "));
  EXPECT_TRUE(store(storage, "new"));
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(content(), "old and new");
}

TEST_F(StoragePromise, ClearDropsTheOldContent) {
  promises("Drops the old content.");
  write("old");
  Storage storage;
  ASSERT_TRUE(init(storage));
  EXPECT_TRUE(storage.clear());
  EXPECT_TRUE(storage.shutdown());
  EXPECT_EQ(content(), "");
  EXPECT_TRUE(fs::exists(file()));
}

TEST_F(StoragePromise, RefusesNamesWithAFolder) {
  promises("a name without a folder. False when it cannot be written, or is no such name.");
  for (const char* const name : {"", ".", "..", "/", "a/b", "/etc/passwd", "../file"}) {
    Storage storage;
    EXPECT_FALSE(init(storage, name)) << name;
  }
}

TEST_F(StoragePromise, RefusesAllCallsWhileItIsUnbound) {
  promises("Before init and after shutdown, every call but init is refused.");
  Storage storage;
  EXPECT_FALSE(storage.clear());
  EXPECT_FALSE(store(storage, "x"));
  EXPECT_FALSE(storage.shutdown());
  ASSERT_TRUE(init(storage));
  EXPECT_TRUE(storage.shutdown());
  EXPECT_FALSE(storage.clear());
  EXPECT_FALSE(store(storage, "x"));
  EXPECT_FALSE(storage.shutdown());
}

TEST_F(StoragePromise, ReportsThatTheOldContentRemains) {
  promises("False when the old content remains.");
  Storage storage;
  ASSERT_TRUE(prepare(storage, "new"));
  fs::create_directories(file() / "in the way");
  EXPECT_FALSE(storage.shutdown());
  EXPECT_TRUE(fs::exists(file() / "in the way"));
}

TEST_F(StoragePromise, DeletesAnyFileAndEmptyFolders) {
  promises("Deletes the file of any kind, or the empty folder, at `path`.");
  write("text");
  EXPECT_TRUE(Storage::deleteFile_noEx(file()));
  EXPECT_FALSE(fs::exists(file()));
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  EXPECT_TRUE(Storage::deleteFile_noEx(file()));
  EXPECT_FALSE(fs::exists(file()));
  fs::create_directory(file());
  EXPECT_TRUE(Storage::deleteFile_noEx(file()));
  EXPECT_FALSE(fs::exists(file()));
}

TEST_F(StoragePromise, ReportsWhetherTheFileIsGone) {
  promises("False when it still exists; true when there was none.");
  EXPECT_TRUE(Storage::deleteFile_noEx(file()));
  fs::create_directories(file() / "more");
  EXPECT_FALSE(Storage::deleteFile_noEx(file())) << "not empty";
  EXPECT_TRUE(fs::exists(file() / "more"));
}

TEST_F(StoragePromise, DeletingNeverThrows) {
  promises("Never throws.");
  for (const std::string& path : {std::string(), std::string(10'000, 'x'), std::string("\0", 1),
                                  std::string("/dev/null/file"), std::string("/proc/self")})
    EXPECT_NO_THROW(Storage::deleteFile_noEx(path)) << path.substr(0, 40);
}

}  // namespace
