#include "remote/SocketFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <thread>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "framework/OwnerOnly.h"
#include "remote/SocketAddress.h"

namespace host {
namespace {

using std::chrono::milliseconds;

constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kOwnerAndGroup = 0660;
constexpr auto kSameOwner = static_cast<uid_t>(-1);

Error failure(const std::filesystem::path& file, const char* what) {
  return Error("socket " + file.string() + ": " + what + ": " + std::strerror(errno));
}

Descriptor newSocket(const std::filesystem::path& file) {
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket.valid()) throw failure(file, "cannot create it");
  return socket;
}

constexpr milliseconds kPause{10};

// False: another process held the lock throughout. A folder that cannot be locked at all, as on
// some network file systems, counts as locked.
bool lockInTime(int folder, milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (::flock(folder, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return true;
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

// Held while checking and replacing the file. Locks the folder, because a lock file would stay
// behind. If the folder cannot be opened, the host starts without the lock.
Descriptor lockFolder(const std::filesystem::path& folder, const std::filesystem::path& file,
                      milliseconds patience) {
  Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor.valid() || lockInTime(descriptor.get(), patience)) return descriptor;
  throw Error("socket " + file.string() + ": its folder " + folder.string() +
              " stays locked by another process; end that process, or choose another folder");
}

std::filesystem::path folderOf(const std::filesystem::path& file) {
  return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

// The socket's group may enter the folder, but neither list it nor write to it.
void makeFolder(const std::filesystem::path& folder, std::optional<gid_t> group) {
  using std::filesystem::perms;
  std::error_code error;
  if (!std::filesystem::create_directories(folder, error)) return;
  std::filesystem::permissions(folder, perms::owner_all, error);
  if (!group || ::chown(folder.c_str(), kSameOwner, *group) != 0) return;
  std::filesystem::permissions(folder, perms::owner_all | perms::group_exec, error);
}

// Logs one line when the group's members cannot reach the file, because a folder on its path lets
// neither the group nor others enter.
void warnIfGroupCannotReach(const std::filesystem::path& file, gid_t group) {
  std::error_code error;
  std::filesystem::path folder;
  for (const auto& name : std::filesystem::canonical(file, error).parent_path()) {
    folder /= name;
    struct stat found {};
    if (::stat(folder.c_str(), &found) != 0) return;
    const mode_t enter = found.st_gid == group ? S_IXGRP : S_IXOTH;
    if ((found.st_mode & enter) != 0) continue;
    return logAppUni(
        "clockhost", kLogWarning, __FILE__, __LINE__,
        "socket %s: its group (%u) cannot enter the folder %s (mode %04o); allow it, or "
        "choose another place with --socket",
        file.c_str(), static_cast<unsigned>(group), folder.c_str(),
        static_cast<unsigned>(found.st_mode & kModeBits));
  }
}

}  // namespace

SocketFile::SocketFile(std::filesystem::path file, std::optional<gid_t> group,
                       milliseconds patience)
    : m_file(std::move(file)) {
  const std::filesystem::path folder = folderOf(m_file);
  makeFolder(folder, group);
  const Descriptor lock = lockFolder(folder, m_file, patience);
  refuseIfTaken();
  bind();
  if (group) giveTo(*group);
  listen();
  if (group) warnIfGroupCannotReach(m_file, *group);
}

SocketFile::~SocketFile() {
  struct stat found {};
  if (::lstat(m_file.c_str(), &found) != 0) return;
  if (found.st_dev == m_device && found.st_ino == m_inode) ::unlink(m_file.c_str());
}

void SocketFile::refuseIfTaken() const {
  struct stat found {};
  if (::lstat(m_file.c_str(), &found) != 0) return;
  if (!S_ISSOCK(found.st_mode)) {
    throw Error("socket " + m_file.string() + ": the file exists and is not a socket");
  }
  const Descriptor probe = newSocket(m_file);
  const SocketAddress address(m_file);
  if (::connect(probe.get(), address.get(), address.size()) == 0 || errno == EAGAIN) {
    throw Error("socket " + m_file.string() + " is in use by a running program");
  }
  if (errno != ECONNREFUSED) throw failure(m_file, "cannot find out whether a host runs there");
  if (::unlink(m_file.c_str()) != 0) throw failure(m_file, "cannot remove the stale one");
}

void SocketFile::bind() {
  m_listener = newSocket(m_file);
  const SocketAddress address(m_file);
  // bind gives the socket's mode to the file, so the mode is never wider.
  if (::fchmod(m_listener.get(), kOwnerOnly) != 0 ||
      ::bind(m_listener.get(), address.get(), address.size()) != 0) {
    throw failure(m_file, "cannot bind it");
  }
  struct stat made {};
  if (::lstat(m_file.c_str(), &made) == 0) {
    m_device = made.st_dev;
    m_inode = made.st_ino;
  }
}

// REQUIRES: called before listen.
void SocketFile::giveTo(gid_t group) const {
  if (::lchown(m_file.c_str(), kSameOwner, group) != 0 ||
      ::chmod(m_file.c_str(), kOwnerAndGroup) != 0) {
    throw failure(m_file, "cannot give it to the group");
  }
}

void SocketFile::listen() {
  if (::listen(m_listener.get(), SOMAXCONN) != 0) throw failure(m_file, "cannot listen at it");
}

}  // namespace host
