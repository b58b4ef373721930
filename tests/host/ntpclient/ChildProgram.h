#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "base/Descriptor.h"

namespace host::ntp {

// A program with its standard error in the test's hands. The destructor kills and reaps it.
class ChildProgram {
 public:
  static constexpr int kChannel = 3;

  // arguments: the program's path first. environment: "NAME=value" texts, and nothing else.
  // channel: becomes the program's descriptor kChannel, if it is one.
  ChildProgram(std::vector<std::string> arguments, std::vector<std::string> environment,
               int channel = -1);
  ~ChildProgram();
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;

  [[nodiscard]] pid_t id() const { return m_child; }
  void kill(int signal) const;

  // The next line; nothing when all who held the other end are gone, or after 20 s.
  [[nodiscard]] std::optional<std::string> line();

  // All lines until everybody is gone.
  [[nodiscard]] std::vector<std::string> lines();

  // Waits for the end. The exit status, or the signal's number negated; nothing after 20 s.
  [[nodiscard]] std::optional<int> wait();

 private:
  pid_t m_child = -1;
  Descriptor m_errors;
  std::string m_read;
};

}  // namespace host::ntp
