#pragma once

#include <deque>
#include <functional>
#include <utility>

namespace host {

// The tasks of a loop that the test runs. Thread: one.
class LoopTasks {
 public:
  void add(std::function<void()> task) { m_tasks.push_back(std::move(task)); }

  // False when there is none.
  bool runNext() {
    if (m_tasks.empty()) return false;
    const auto task = std::move(m_tasks.front());
    m_tasks.pop_front();
    task();
    return true;
  }
  // Also runs the tasks that these tasks add.
  void runAll() {
    while (runNext()) continue;
  }
  [[nodiscard]] std::size_t size() const { return m_tasks.size(); }

 private:
  std::deque<std::function<void()>> m_tasks;
};

}  // namespace host
