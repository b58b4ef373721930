#include "Folder.h"

#include <linux/magic.h>
#include <stdlib.h>
#include <sys/vfs.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

// A write to a file system in memory costs nothing of what is to be measured.
void requireDisk(const char* folder) {
  struct statfs found {};
  if (statfs(folder, &found) != 0) throw std::system_error(errno, std::generic_category(), folder);
  if (found.f_type != TMPFS_MAGIC && found.f_type != RAMFS_MAGIC) return;
  throw std::runtime_error(std::string(folder) + " is in memory and not on a disk");
}

std::filesystem::path parentFor(Folder::Place place) {
  if (place == Folder::Place::disk) {
    requireDisk(BENCH_DISK);
    return BENCH_DISK;
  }
  return std::filesystem::temp_directory_path();
}

}  // namespace

Folder::Folder(Place place) {
  std::string name = (parentFor(place) / "clock-bench-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  m_path = name;
}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

}  // namespace bench
