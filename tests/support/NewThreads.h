#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <set>

namespace support {

// Counts the threads that the process has started since the object was made and still has. A thread
// that was joined before may be listed a moment longer, so it compares which ones there are.
class NewThreads {
 public:
  NewThreads() : m_before(now()) {}

  [[nodiscard]] std::ptrdiff_t count() const {
    const std::set<std::filesystem::path> all = now();
    return std::count_if(all.begin(), all.end(),
                         [this](const auto& thread) { return !m_before.contains(thread); });
  }

 private:
  static std::set<std::filesystem::path> now() {
    std::set<std::filesystem::path> threads;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
      threads.insert(thread.path());
    }
    return threads;
  }

  const std::set<std::filesystem::path> m_before;
};

}  // namespace support
