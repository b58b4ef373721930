#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace simulation {

using Lines = std::vector<std::string>;

// What happens, in order, a line each. Thread: any.
class Journal {
 public:
  void add(std::string line) {
    const std::lock_guard lock(m_mutex);
    if (!m_muted) m_lines.push_back(std::move(line));
  }
  // What was written since the last call.
  [[nodiscard]] Lines take() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_lines, {});
  }
  // While muted, nothing is kept.
  void mute(bool muted) {
    const std::lock_guard lock(m_mutex);
    m_muted = muted;
  }

 private:
  std::mutex m_mutex;
  Lines m_lines;
  bool m_muted = false;
};

}  // namespace simulation
