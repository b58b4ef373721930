#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace support {

// All bytes of a file; what could be read of one whose reading fails, such as of a process in /proc
// that has ended meanwhile.
inline std::string contentOf(const std::filesystem::path& path) {
  const std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

}  // namespace support
