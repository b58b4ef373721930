#include "runtime/LogFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "base/WriteAll.h"

namespace host {

namespace fs = std::filesystem;

LogFile::LogFile(const fs::path& path, std::size_t mostBytes)
    : m_path(fs::absolute(path)), m_mostBytes(mostBytes) {
  open();
}

// Does not wait for a reader of a pipe, which is refused.
void LogFile::open() {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Descriptor file(::open(m_path.c_str(), kFlags, S_IRUSR | S_IWUSR));
  struct stat found {};
  if (!file.valid() || ::fstat(file.get(), &found) != 0) {
    throw Error("log file cannot be opened: " + m_path.string() + ": " + std::strerror(errno));
  }
  if (!S_ISREG(found.st_mode)) throw Error("log file is not a regular file: " + m_path.string());
  m_file = std::move(file);
  m_size = static_cast<std::size_t>(found.st_size);
}

void LogFile::openOrReport() try { open(); } catch (const Error& error) {
  report(error.what());
}

// Without memory the lines are lost: an exception would end the host.
void LogFile::write(std::string_view lines) noexcept try {
  if (m_reopen.exchange(false)) openOrReport();
  if (m_size > 0 && m_size + lines.size() > m_mostBytes) rotate();
  m_size += lines.size();
  if (writeAll(m_file.get(), lines)) {
    m_reported = false;
  } else {
    report(
        ("log file cannot be written: " + m_path.string() + ": " + std::strerror(errno)).c_str());
  }
} catch (const std::exception&) {
  m_reopen = true;  // the open file may have been renamed
}

// After a failure the file grows by as much again before the next attempt.
void LogFile::rotate() {
  std::error_code code;
  for (int number = kOlderFiles; number > 0; --number) {
    const fs::path from = number == 1 ? m_path : older(number - 1);
    fs::rename(from, older(number), code);
  }
  m_size = 0;
  if (!code) return openOrReport();
  report(("log file cannot be renamed: " + m_path.string() + ": " + code.message()).c_str());
}

fs::path LogFile::older(int number) const {
  return m_path.string() + '.' + std::to_string(number);
}

void LogFile::report(const char* what) {
  if (!m_reported) std::cerr << errorLine("clockhost", what);
  m_reported = true;
}

}  // namespace host
