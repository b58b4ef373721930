#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace support {

// All bytes of a file; empty when it cannot be read.
inline std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace support
