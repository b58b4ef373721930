#include "Folder.h"

#include <stdlib.h>

#include <cerrno>
#include <system_error>

namespace bench {
namespace {

std::filesystem::path parentFor(Folder::Place place) {
  if (place == Folder::Place::disk) return BENCH_DISK;
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
