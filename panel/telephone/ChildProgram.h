#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

#include "base/Descriptor.h"

namespace panel {

// A program of this installation that runs as a child, with its outputs in one pipe. Owner: its
// creator; the destructor kills a child that still runs. Thread: one at a time. Failure:
// host::Error, one line.
class ChildProgram {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  ChildProgram(const std::filesystem::path& program, std::vector<std::string> arguments);
  ~ChildProgram();
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;

  // Reads the output until it ends with `text`, or itself ends. False: not by the deadline. At
  // `ending` it kills the child and what that started.
  [[nodiscard]] bool readTo(const std::string& text, Deadline deadline,
                            const std::stop_token& ending = {});

  void interrupt() const;  // SIGINT

  // Reads the rest and waits. Returns the exit status, 128 and more for a signal. After the
  // deadline it kills as at `ending`. Called again, it returns the same.
  [[nodiscard]] int finish(Deadline deadline, const std::stop_token& ending = {});

  [[nodiscard]] const std::string& output() const { return m_output; }  // at most 64 KiB of it

 private:
  [[nodiscard]] bool readSome(Deadline deadline);

  host::Descriptor m_pipe;
  pid_t m_process = -1;  // -1: it has ended
  int m_status = 0;      // how it has ended, as waitpid() tells it
  std::string m_output;
};

}  // namespace panel
