#pragma once

#include <filesystem>
#include <system_error>

#include "framework/StateFolder.h"
#include "support/TemporaryFolder.h"

namespace support {

// A private folder for the device's paths and the storage. It is the working directory of the
// process while the object exists.
class WorkingFolder {
 public:
  WorkingFolder() : WorkingFolder(std::filesystem::temp_directory_path()) {}
  explicit WorkingFolder(const std::filesystem::path& parent) : m_folder(parent) {
    for (const char* const name : {"data", "sbin", "ipc", "state"})
      std::filesystem::create_directory(m_folder / name);
    std::filesystem::current_path(m_folder.path());
    host::setStorageFolder(m_folder / "state");
  }
  // Leaves the folder before it is removed.
  ~WorkingFolder() {
    std::error_code ignored;
    std::filesystem::current_path(m_former, ignored);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  const std::filesystem::path m_former = std::filesystem::current_path();
  const TemporaryFolder m_folder;
};

}  // namespace support
