#include "framework/OwnerOnly.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"

namespace host {

void makeOwnFolder(const std::filesystem::path& path) {
  const std::filesystem::path folder = path.has_filename() ? path : path.parent_path();
  std::error_code code;
  if (folder.empty() || std::filesystem::exists(folder, code)) return;
  std::filesystem::create_directories(folder.parent_path(), code);
  if (::mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST) return;
  const std::string why =
      errno == EROFS || errno == EACCES ? "the folder above it is read-only" : std::strerror(errno);
  throw Error("state folder \"" + folder.string() + "\" cannot be created: " + why);
}

void tighten(const std::string& path, mode_t most) {
  struct stat found {};
  if (::lstat(path.c_str(), &found) != 0) return;
  if (!S_ISREG(found.st_mode) && !S_ISDIR(found.st_mode)) return;
  const mode_t before = found.st_mode & kModeBits;
  const mode_t after = before & most;
  if (after == before) return;
  errno = EPERM;  // as chmod fails for another user's file
  const bool changed = found.st_uid == ::geteuid() && ::chmod(path.c_str(), after) == 0;
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "\"%s\" is open to others (mode %04o): %s %04o%s%s", path.c_str(),
            static_cast<unsigned>(before), changed ? "changed to" : "it cannot be changed to",
            static_cast<unsigned>(after), changed ? "" : ": ", changed ? "" : std::strerror(errno));
}

void tightenFile(const std::string& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0) return;  // missing, or a link to a missing file
  if (!S_ISREG(found.st_mode)) throw Error("\"" + path + "\" is not a regular file; remove it");
  tighten(path, S_IRUSR | S_IWUSR);
}

}  // namespace host
