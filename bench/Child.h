#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

// A program in a process of its own, on the processor of this one; what it says is dropped.
// Owner: a measurement. Destruction ends it as an operator would, and reaps it.
// Failure: std::system_error from the constructor.
class Child {
 public:
  explicit Child(const std::vector<std::string>& words);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Its own, and reaps it.
  void waitForEnd();

  [[nodiscard]] pid_t id() const { return m_id; }

 private:
  pid_t m_id = -1;  // -1: it has been reaped
};

}  // namespace bench
