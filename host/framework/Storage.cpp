#include "Storage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

#include "Logging.h"
#include "base/Descriptor.h"
#include "base/LogLevels.h"
#include "base/Mutex.h"
#include "base/WriteAll.h"
#include "framework/OwnerOnly.h"
#include "framework/StateFolder.h"
#include "interpose/DeviceRoot.h"

namespace {

using host::Descriptor;

constexpr mode_t kFileMode = 0644;

// The host stores scripts of a few lines. A larger file is not ours and is not read into memory.
constexpr std::size_t kLargest = std::size_t{64} * 1024;  // bytes

bool writeNew(const std::string& path, const std::string& content) {
  // Never opens a file that a killed process or another program left there.
  unlink(path.c_str());
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
  return file.valid() && host::writeAll(file.get(), content) && fsync(file.get()) == 0;
}

// Makes the rename durable. A failure is ignored, because the content has changed in any case.
void syncFolder(const std::string& path) {
  const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.valid()) fsync(folder.get());
}

// Empty, with errno: the file is missing, unreadable, not a regular file, or has more bytes.
std::optional<std::string> contentOf(const std::string& path, std::size_t most) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!file.valid() || fstat(file.get(), &status) != 0) return std::nullopt;
  // Not by the size, which may change before the read. Memory that is not written to costs nothing.
  const auto content = std::make_unique_for_overwrite<char[]>(most + 1);
  const ssize_t length = read(file.get(), content.get(), most + 1);
  if (!S_ISREG(status.st_mode) || length > static_cast<ssize_t>(most)) {
    errno = S_ISREG(status.st_mode) ? EFBIG : EINVAL;
    return std::nullopt;
  }
  if (length < 0) return std::nullopt;
  return std::string(content.get(), static_cast<std::size_t>(length));
}

bool isNameWithoutFolder(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos && name != "." && name != "..";
}

// Why the file cannot be written in the folder; empty: it can.
std::string obstacle(const std::string& folder, const std::string& path) {
  if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    const bool readOnly = errno == EROFS || errno == EACCES;
    return readOnly ? "state folder is read-only: " + folder : folder + ": " + std::strerror(errno);
  }
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return errno == ENOENT ? "" : std::strerror(errno);
  return S_ISREG(status.st_mode) ? "" : path + " is not a regular file; remove it";
}

bool isFolder(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void logFailure(const char* action, const std::string& name, const std::string& why) {
  logAppUni("clockhost", host::kLogError, __FILE__, __LINE__, "storage \"%s\" cannot be %s: %s",
            name.c_str(), action, why.c_str());
}

// Held by the one writer: the new file has a fixed name until it is renamed, so that killed
// processes do not leave more and more files.
constinit host::Mutex g_writing;

// How much of the old content is read for the listener.
constexpr std::size_t kOldContent = 4096;  // bytes

// before: set to the old content when the file is replaced.
bool replace(const std::string& folder, const std::string& name, const std::string& content,
             std::optional<std::string>& before) {
  const host::MutexLock lock(g_writing);
  const std::string path = folder + "/" + name;
  const std::string next = folder + "/." + name + ".new";
  host::tighten(path, kFileMode | S_IXUSR | S_IXGRP | S_IXOTH);
  const auto present = contentOf(path, std::max(content.size(), kOldContent));
  if (present == content) return true;  // spares the flash memory: each start stores the same
  if (!present && errno != ENOENT && errno != EFBIG) logFailure("read", name, std::strerror(errno));
  if (isFolder(next)) {
    logFailure("written", name, next + " is a folder; remove it");
    return false;
  }
  if (writeNew(next, content) && rename(next.c_str(), path.c_str()) == 0) {
    syncFolder(folder);
    before = present.value_or("");
    return true;
  }
  logFailure("written", name, std::strerror(errno));
  unlink(next.c_str());
  return false;
}

}  // namespace

struct Storage::Impl {
  std::string folder;  // empty: not bound
  std::string name;
  std::optional<std::string> content;  // the new content; empty: unchanged

  // Reads the current content, to append to it.
  bool readContent() {
    content = contentOf(folder + "/" + name, kLargest);
    if (!content && errno == ENOENT) content = "";
    if (!content) logFailure("read", name, std::strerror(errno));
    return content.has_value();
  }
};

Storage::Storage() : m_impl(std::make_unique<Impl>()) {}

Storage::~Storage() = default;

// The modes are ignored: the content is always bytes, and is kept until clear.
bool Storage::init(const char* name, std::ios_base::openmode /*readMode*/,
                   std::ios_base::openmode /*writeMode*/) {
  *m_impl = Impl{};
  const std::string folder = host::storageFolder();
  if (name == nullptr || !isNameWithoutFolder(name) || folder.empty()) return false;
  const std::string why = obstacle(folder, folder + "/" + name);
  if (!why.empty()) {
    logFailure("bound", name, why);
    return false;
  }
  m_impl->folder = folder;
  m_impl->name = name;
  return true;
}

bool Storage::clear() {
  if (m_impl->folder.empty()) return false;
  m_impl->content = "";
  return true;
}

// Storages have no parts here.
bool Storage::store(const char* subName, char* data, int length) {
  if (m_impl->folder.empty() || subName != nullptr || length < 0) return false;
  if (data == nullptr && length > 0) return false;
  if (!m_impl->content && !m_impl->readContent()) return false;
  if (length > 0) m_impl->content->append(data, static_cast<std::size_t>(length));
  return true;
}

bool Storage::shutdown() {
  const Impl bound = std::move(*m_impl);
  *m_impl = Impl{};
  if (bound.folder.empty()) return false;
  if (!bound.content) return true;
  std::optional<std::string> before;
  const bool stored = replace(bound.folder, bound.name, *bound.content, before);
  if (before) host::reportStored(bound.name, *before, *bound.content);
  return stored;
}

bool Storage::deleteFile_noEx(const std::string& path) {
  try {
    return remove(host::hostPath(path).c_str()) == 0 || errno == ENOENT;
  } catch (const std::exception&) {
    return false;
  }
}
