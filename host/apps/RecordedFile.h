#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "base/Descriptor.h"

namespace host {

// A text file, written line by line, so that it holds whole lines at any time. For its owner alone:
// a recording may hold secrets. Owner: its creator. Thread: one. Failure: host::Error from the
// constructor when the file exists (unless `overwrite`) or cannot be created, and from add() when
// the line cannot be written; the file then ends before it.
class RecordedFile {
 public:
  RecordedFile(std::filesystem::path path, bool overwrite);

  void add(const std::string& line);

  // Makes that line, counted from 1, and all after it comments. False: there is none, or it is one
  // already. Throws Error when the file cannot be read or written; it then ends before a line.
  [[nodiscard]] bool commentFrom(std::size_t line);

  [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

 private:
  std::filesystem::path m_path;
  Descriptor m_file;
  off_t m_size = 0;  // of the whole lines
};

}  // namespace host
