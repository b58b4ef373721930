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
};

// Reads the table: the input, and below it "  STATUS LINE".
inline std::vector<BadInput> badInputs() {
  std::ifstream table(BAD_INPUTS);
  if (!table) throw std::runtime_error(BAD_INPUTS);
  std::vector<BadInput> rows;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line.front() == '#') continue;
    const std::size_t word = line.find(' ', 2);
    if (line.starts_with("  ")) {
      rows.back().status = std::stoi(line);
      rows.back().line = line.substr(word + 1);
    } else {
      const std::size_t end = std::min(line.find(' '), line.size());
      rows.push_back({line.substr(0, end), line.substr(std::min(end + 1, line.size()))});
    }
  }
  return rows;
}

}  // namespace support
