#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace support {

// What several recording parts saw, in order. Thread: any.
class Journal {
 public:
  void add(std::string line) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_lines.push_back(std::move(line));
  }
  [[nodiscard]] std::vector<std::string> lines() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_lines;
  }
  // Returns all lines and clears the journal.
  std::vector<std::string> take() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return std::exchange(m_lines, {});
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_lines;
};

}  // namespace support
