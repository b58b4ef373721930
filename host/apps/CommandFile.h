#pragma once

#include <filesystem>
#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace host {

// The commands of `clockctl -f FILE`, one on each line, in the words of a scenario. A line of a
// pipe is read when the one before it is done. Owner: its creator. Thread: one.
class CommandFile {
 public:
  // "-" is standard input. Throws host::Error if the file cannot be read.
  explicit CommandFile(std::filesystem::path file);

  // Reads the next line that has words; false at the end. Throws UsageError for a line that cannot
  // be split into words, and host::Error when reading fails.
  [[nodiscard]] bool next();

  [[nodiscard]] const std::vector<std::string>& words() const { return m_words; }
  [[nodiscard]] std::string place() const;  // "FILE:LINE: " of the last line

 private:
  [[nodiscard]] bool readLine();
  [[noreturn]] void fail() const;

  const std::filesystem::path m_file;
  std::ifstream m_opened;
  std::istream& m_in;
  std::string m_line;
  std::vector<std::string> m_words;
  int m_number = 0;
};

}  // namespace host
