#pragma once

#include <sys/types.h>

#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace support {

// Whether the thread, of any process, sleeps in a system call.
[[nodiscard]] inline bool sleeps(pid_t thread) {
  std::ifstream file("/proc/" + std::to_string(thread) + "/stat");
  const std::string line{std::istreambuf_iterator<char>(file), {}};
  const auto name = line.rfind(')');  // the letter of the state follows the name in parentheses
  return name != std::string::npos && line.compare(name, 3, ") S") == 0;
}

// Waits until it does.
inline void waitUntilSleeps(pid_t thread) {
  while (!sleeps(thread)) std::this_thread::yield();
}

}  // namespace support
