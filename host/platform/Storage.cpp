#include "Storage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <mutex>
#include <system_error>

#include "Logging.h"
#include "clock/DeviceRoot.h"
#include "platform/StateFolder.h"

namespace {

constexpr mode_t kFileMode = 0644;

// A descriptor that is closed when the object goes.
class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() {
    if (m_number >= 0) close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] bool valid() const { return m_number >= 0; }
  [[nodiscard]] int number() const { return m_number; }

 private:
  int m_number;
};

bool writeAll(int descriptor, const std::string& content) {
  std::size_t written = 0;
  while (written < content.size()) {
    const ssize_t step = ::write(descriptor, content.data() + written, content.size() - written);
    if (step < 0 && errno != EINTR) return false;
    if (step > 0) written += static_cast<std::size_t>(step);
  }
  return true;
}

bool writeNew(const std::string& path, const std::string& content) {
  const Descriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kFileMode));
  return file.valid() && writeAll(file.number(), content) && fsync(file.number()) == 0;
}

// The new name is on the disk once the folder is; the content has changed either way.
void syncFolder(const std::string& path) {
  const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.valid()) fsync(folder.number());
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool holds(const std::string& path, const std::string& content) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  return access(path.c_str(), R_OK) == 0 && contentOf(path) == content;
}

bool isNameWithoutFolder(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos && name != "." && name != "..";
}

// A folder that takes new files, and in it a file of that name or nothing.
bool canBeWritten(const std::string& folder, const std::string& path) {
  if (access(folder.c_str(), W_OK | X_OK) != 0) return false;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return errno == ENOENT;
  return S_ISREG(status.st_mode);
}

void logFailure(const char* action, const std::string& name) {
  logAppUni("clockhost", 2, __FILE__, __LINE__, "storage \"%s\" cannot be %s: %s", name.c_str(),
            action, std::strerror(errno));
}

// One writer at a time: the file on its way has a fixed name, so that none is left behind by a
// process that was killed.
std::mutex& writing() {
  static auto& mutex = *new std::mutex;
  return mutex;
}

bool replace(const std::string& folder, const std::string& name, const std::string& content) {
  const std::lock_guard lock(writing());
  const std::string path = folder + "/" + name;
  const std::string next = folder + "/." + name + ".new";
  if (holds(path, content)) return true;  // each start stores the same: flash is to last
  if (writeNew(next, content) && rename(next.c_str(), path.c_str()) == 0) {
    syncFolder(folder);
    return true;
  }
  logFailure("written", name);
  unlink(next.c_str());
  return false;
}

}  // namespace

struct Storage::Impl {
  std::string folder;  // empty: not bound
  std::string name;
  std::string content;  // what the file is to become
  bool changed = false;
};

Storage::Storage() : m_impl(std::make_unique<Impl>()) {}

Storage::~Storage() = default;

// The modes are those of the streams that other platforms open; here content is always bytes, and
// is kept until clear.
bool Storage::init(const char* name, std::ios_base::openmode /*readMode*/,
                   std::ios_base::openmode /*writeMode*/) {
  *m_impl = Impl{};
  const std::string folder = host::storageFolder();
  if (name == nullptr || !isNameWithoutFolder(name) || folder.empty()) return false;
  if (!canBeWritten(folder, folder + "/" + name)) {
    logFailure("bound", name);
    return false;
  }
  m_impl->folder = folder;
  m_impl->name = name;
  m_impl->content = contentOf(folder + "/" + name);
  return true;
}

bool Storage::clear() {
  if (m_impl->folder.empty()) return false;
  m_impl->content.clear();
  m_impl->changed = true;
  return true;
}

// This platform's storages have no parts.
bool Storage::store(const char* subName, char* data, int length) {
  if (m_impl->folder.empty() || subName != nullptr || length < 0) return false;
  if (data == nullptr && length > 0) return false;
  if (length > 0) m_impl->content.append(data, static_cast<std::size_t>(length));
  m_impl->changed = true;
  return true;
}

bool Storage::shutdown() {
  const Impl bound = std::move(*m_impl);
  *m_impl = Impl{};
  if (bound.folder.empty()) return false;
  return !bound.changed || replace(bound.folder, bound.name, bound.content);
}

bool Storage::deleteFile_noEx(const std::string& path) {
  try {
    return unlink(host::hostPath(path).c_str()) == 0 || errno == ENOENT;
  } catch (const std::exception&) {
    return false;
  }
}
