#include "apps/RecordedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>
#include <vector>

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

bool RecordedFile::commentFrom(std::size_t line) {
  std::ifstream text(m_path, std::ios::binary);
  off_t kept = 0;
  std::string words;
  for (std::size_t i = 1; i < line && std::getline(text, words); ++i) {
    kept += static_cast<off_t>(words.size() + 1);
  }
  std::vector<std::string> rest;
  while (std::getline(text, words)) rest.push_back(words);
  if (rest.empty() || rest.front().starts_with('#')) return false;
  if (::ftruncate(m_file.get(), kept) != 0 || ::lseek(m_file.get(), kept, SEEK_SET) != kept) {
    throw Error(quoted(m_path) + " cannot be written: " + std::strerror(errno));
  }
  m_size = kept;
  for (const std::string& each : rest)
    add(each.starts_with('#') ? each : "# not replayed: " + each);
  return true;
}

}  // namespace host
