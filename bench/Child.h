#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

// A program in a child process; its output is dropped. Destruction ends it with SIGTERM, after
// ten seconds with SIGKILL, and reaps it. Owner: a measurement.
// Failure: std::system_error from the constructor.
class Child {
 public:
  // words: the program's file and arguments. environment: all of it, as NAME=VALUE.
  explicit Child(std::vector<std::string> words, std::vector<std::string> environment = {});
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  [[nodiscard]] pid_t id() const { return m_id; }

 private:
  pid_t m_id = 0;
};

}  // namespace bench
