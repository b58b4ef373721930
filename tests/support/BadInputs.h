#pragma once

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

// A row of bad-inputs.txt.
struct BadInput {
  std::string program;  // "clockctl", "clockhost" or "scenario"
  std::string input;    // the program's words, or the scenario's line
  int status = 0;
  std::string line{};  // what it prints, exactly

  // Refused by the words alone.
  [[nodiscard]] bool needsNothing() const {
    return status == 2 && input.find(kFolder) == std::string::npos;
  }

  static constexpr const char* kFolder = "DIR/";  // in input and line
};

// Reads the table: the input, and below it "  STATUS LINE".
inline std::vector<BadInput> badInputs() {
  std::ifstream table(BAD_INPUTS);
  if (!table) throw std::runtime_error(BAD_INPUTS);
  std::vector<BadInput> rows;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (line.starts_with("  ")) {
      const std::size_t end = std::min(line.find(' ', 2), line.size() - 1);
      rows.back().status = std::stoi(line);
      rows.back().line = line.substr(end + 1);
    } else {
      const std::size_t end = std::min(line.find(' '), line.size());
      rows.push_back({line.substr(0, end), line.substr(std::min(end + 1, line.size()))});
    }
  }
  return rows;
}

}  // namespace support
