#include "remote/GroupWay.h"

#include <sys/stat.h>

#include "Logging.h"
#include "framework/OwnerOnly.h"

namespace host {
namespace {

void tell(const std::filesystem::path& file, gid_t group, const std::filesystem::path& folder,
          mode_t mode) {
  logAppUni("clockhost", 3, __FILE__, __LINE__,
            "socket %s: its group (%u) cannot enter the folder %s (mode %04o); let it, or choose "
            "another place with --socket",
            file.c_str(), static_cast<unsigned>(group), folder.c_str(),
            static_cast<unsigned>(mode & kModeBits));
}

}  // namespace

void tellClosedWay(const std::filesystem::path& file, gid_t group) {
  std::error_code error;
  std::filesystem::path way;
  for (const auto& name : std::filesystem::canonical(file, error).parent_path()) {
    way /= name;
    struct stat found {};
    if (::stat(way.c_str(), &found) != 0) return;
    const mode_t enter = found.st_gid == group ? S_IXGRP : S_IXOTH;
    if ((found.st_mode & enter) == 0) return tell(file, group, way, found.st_mode);
  }
}

}  // namespace host
