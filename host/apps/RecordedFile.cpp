#include "apps/RecordedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "base/WriteAll.h"

namespace host {
namespace {

std::string quoted(const std::filesystem::path& path) {
  return quotedText(path.string());
}

// Empties an existing file, which keeps its mode when it is opened. Devices stay as they are.
void makeOwn(int file, const std::filesystem::path& path) {
  struct stat found {};
  if (::fstat(file, &found) != 0 || !S_ISREG(found.st_mode)) return;
  if (::fchmod(file, S_IRUSR | S_IWUSR) == 0 && ::ftruncate(file, 0) == 0) return;
  throw Error(quoted(path) + " cannot be made private: " + std::strerror(errno) +
              "; name another file");
}

Descriptor opened(const std::filesystem::path& path, bool overwrite) {
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (overwrite ? 0 : O_EXCL);
  Descriptor file(::open(path.c_str(), flags, S_IRUSR | S_IWUSR));
  if (file.valid()) {
    makeOwn(file.get(), path);
    return file;
  }
  if (errno == EEXIST) {
    throw Error(quoted(path) + " exists; name another file, or write --overwrite");
  }
  throw Error(quoted(path) + " cannot be created: " + std::strerror(errno));
}

}  // namespace

RecordedFile::RecordedFile(std::filesystem::path path, bool overwrite)
    : m_path(std::move(path)), m_file(opened(m_path, overwrite)) {}

void RecordedFile::add(const std::string& line) {
  if (!writeAll(m_file.get(), line + '\n')) {
    const int error = errno;
    const bool whole = ::ftruncate(m_file.get(), m_size) == 0;  // false for a device
    throw Error(quoted(m_path) + " cannot be written: " + std::strerror(error) +
                (whole ? "; the file holds all earlier steps" : ""));
  }
  m_size += static_cast<off_t>(line.size() + 1);
}

}  // namespace host
