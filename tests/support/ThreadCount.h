#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace support {

// How many threads the process has.
inline std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

}  // namespace support
