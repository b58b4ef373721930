#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <string_view>

#include "base/Descriptor.h"

namespace host {

// A file to which the log is appended. Before it grows beyond a limit it is renamed to FILE.1, and
// the older ones to FILE.2 and so on. Owner: shared by the log and main. Thread: write() one;
// reopen() any. Failure: the constructor throws Error. Later failures go to standard error, the
// first of several in one line; later lines go to the file that is still open, or are lost.
class LogFile {
 public:
  // All files together fit beside a telephone's other data, and hold about 200,000 lines of a
  // telephone at rest.
  static constexpr std::size_t kMostBytes = std::size_t{4} * 1024 * 1024;
  static constexpr int kOlderFiles = 4;

  explicit LogFile(const std::filesystem::path& path, std::size_t mostBytes = kMostBytes);

  void write(std::string_view lines) noexcept;  // whole lines

  // Opens the path again before the next write: another program may have renamed the file.
  void reopen() { m_reopen = true; }

 private:
  void open();
  void openOrReport();
  void rotate();
  [[nodiscard]] std::filesystem::path older(int number) const;
  void report(const char* what);

  const std::filesystem::path m_path;
  const std::size_t m_mostBytes;
  Descriptor m_file;
  std::size_t m_size = 0;
  bool m_reported = false;  // a failure, since the last write that succeeded
  std::atomic<bool> m_reopen = false;
};

}  // namespace host
