#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace support {

// A fresh folder. The destructor removes it with its content.
class TemporaryFolder {
 public:
  TemporaryFolder() : TemporaryFolder(std::filesystem::temp_directory_path()) {}
  explicit TemporaryFolder(const std::filesystem::path& parent) {
    std::string name = (parent / "clock-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }
    m_path = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return m_path / name;
  }

 private:
  std::filesystem::path m_path;
};

// A place in memory, where a sync is cheap; the usual place on a system that has none.
inline std::filesystem::path folderInMemory() {
  const std::filesystem::path memory = "/dev/shm";
  return ::access(memory.c_str(), W_OK | X_OK) == 0 ? memory
                                                    : std::filesystem::temp_directory_path();
}

}  // namespace support
