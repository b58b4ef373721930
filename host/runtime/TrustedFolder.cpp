#include "runtime/TrustedFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <list>

#include "base/Error.h"
#include "base/PrintableText.h"

namespace host {
namespace {

constexpr mode_t kNewFolder = 0755;
constexpr int kMostLinks = 40;  // the kernel's own limit
constexpr const char* kAdvice = "name another place with --device-root";
constexpr const char* kMoreFiles = "raise the limit of open files (ulimit -n)";

bool isTrusted(uid_t owner, uid_t user) {
  return owner == 0 || owner == user;
}

// Walks from the root to a folder.
class Walk {
 public:
  Walk(const std::string& path, std::size_t mostCreated, const EachFolder& each)
      : m_mostCreated(mostCreated), m_each(each) {
    prepend(std::filesystem::absolute(path));
    enterRoot();
  }

  Descriptor run() {
    while (!m_names.empty()) {
      const std::string name = m_names.front();
      m_names.pop_front();
      step(name);
    }
    return std::move(m_folder);
  }

 private:
  // Puts the names of a path before those that are left.
  void prepend(const std::filesystem::path& path) {
    auto place = m_names.begin();
    for (const auto& name : path) {
      if (!name.empty() && name != "/" && name != ".") m_names.insert(place, name.string());
    }
  }

  void enterRoot() {
    m_path.clear();
    Descriptor root(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!root.valid()) fail();
    const struct stat status = statusOf(root);
    enter(std::move(root), status);
  }

  void step(const std::string& name) {
    m_path += "/" + name;
    constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
    Descriptor next(openat(m_folder.get(), name.c_str(), kFlags));
    if (!next.valid() && errno == ENOENT && m_names.size() < m_mostCreated) {
      if (mkdirat(m_folder.get(), name.c_str(), kNewFolder) != 0 && errno != EEXIST) fail();
      next.reset(openat(m_folder.get(), name.c_str(), kFlags));
    }
    if (!next.valid()) fail();
    const struct stat status = statusOf(next);
    if (S_ISLNK(status.st_mode)) {
      follow(next, status);
    } else {
      enter(std::move(next), status);
    }
  }

  void enter(Descriptor folder, const struct stat& status) {
    if (!S_ISDIR(status.st_mode)) fail("is not a folder");
    const std::string reason = reasonToDistrust(status, m_user, m_group);
    if (!reason.empty()) refuse(" " + reason);
    m_folder = std::move(folder);
    if (m_each) m_each(m_folder.get());
  }

  void follow(const Descriptor& link, const struct stat& status) {
    if (!isTrusted(status.st_uid, m_user)) fail("is a link of another user");
    if (++m_links > kMostLinks) fail("has too many links on the way");
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlinkat(link.get(), "", target.data(), target.size());
    if (length < 0) fail();
    const std::filesystem::path path(std::string(target.data(), static_cast<std::size_t>(length)));
    prepend(path);
    if (path.is_absolute()) {
      enterRoot();
    } else {
      m_path = std::filesystem::path(m_path).parent_path();
    }
  }

  struct stat statusOf(const Descriptor& file) const {
    struct stat status {};
    if (fstat(file.get(), &status) != 0) fail();
    return status;
  }

  [[noreturn]] void fail() const {
    const bool full = errno == EMFILE || errno == ENFILE;
    refuse(std::string(": ") + std::strerror(errno) + "; " + (full ? kMoreFiles : kAdvice));
  }

  [[noreturn]] void fail(const std::string& what) const { refuse(" " + what + "; " + kAdvice); }

  [[noreturn]] void refuse(const std::string& why) const {
    throw Error((m_path.empty() ? "/" : m_path) + why);
  }

  const std::size_t m_mostCreated;
  const EachFolder& m_each;
  const uid_t m_user = geteuid();
  const gid_t m_group = getegid();
  std::list<std::string> m_names;  // left to walk
  std::string m_path;              // of the current folder, for errors; empty: the root
  Descriptor m_folder;
  int m_links = 0;
};

}  // namespace

std::string reasonToDistrust(const struct stat& folder, uid_t user, gid_t group) {
  if (!isTrusted(folder.st_uid, user)) return std::string("belongs to another user; ") + kAdvice;
  const bool sticky = (folder.st_mode & S_ISVTX) != 0;
  const bool othersWrite = (folder.st_mode & S_IWOTH) != 0;
  const bool groupWrites =
      (folder.st_mode & S_IWGRP) != 0 && folder.st_gid != 0 && folder.st_gid != group;
  if (sticky || (!othersWrite && !groupWrites)) return "";
  return std::string("is writable by others; remove that permission, or ") + kAdvice;
}

Descriptor openTrustedFolder(const std::string& path, std::size_t mostCreated,
                             const EachFolder& each) {
  return Walk(path, mostCreated, each).run();
}

}  // namespace host
