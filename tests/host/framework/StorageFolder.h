#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Storage.h"
#include "framework/StateFolder.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace host {

// A temporary folder for the files of storages.
class StorageFolder : public testing::Test {
 protected:
  StorageFolder() { setStorageFolder(m_folder.path()); }
  ~StorageFolder() override { setStorageFolder(m_before); }

  [[nodiscard]] std::string content(const std::string& name = "file") const {
    return support::contentOf(m_folder / name);
  }
  void write(const std::string& text) const {
    std::ofstream(m_folder / "file", std::ios::binary) << text;
  }
  [[nodiscard]] std::size_t files() const {
    std::size_t number = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
      static_cast<void>(entry);
      ++number;
    }
    return number;
  }
  // Changes whenever the file is replaced.
  [[nodiscard]] ino_t fileNumber() const {
    struct stat status {};
    EXPECT_EQ(stat((m_folder / "file").c_str(), &status), 0);
    return status.st_ino;
  }
  static bool store(Storage& storage, std::string text) {
    return storage.store(nullptr, text.data(), static_cast<int>(text.size()));
  }
  static bool init(Storage& storage, const char* name = "file") {
    return storage.init(name, std::ios_base::in | std::ios_base::binary,
                        std::ios_base::out | std::ios_base::binary);
  }
  // Opens the storage and replaces its content, up to the shutdown.
  static bool prepare(Storage& storage, const std::string& text) {
    return init(storage) && storage.clear() && store(storage, text);
  }
  static bool replaceContent(const std::string& text) {
    Storage storage;
    return prepare(storage, text) && storage.shutdown();
  }

  const std::string m_before = storageFolder();
  const support::TemporaryFolder m_folder;
};

}  // namespace host
