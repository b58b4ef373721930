#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace integration {

using Words = std::vector<std::string>;

// How a program ended, and what it wrote.
struct Outcome {
  int status;  // exit status; 128 + signal
  std::string out;
  std::string err;
};

// A program in a process of its own, its output in files. Owner: a test. Destruction kills it when
// it still runs, and reaps it; it is killed, too, when the thread that made it ends, and so with
// the test program. It cannot set the machine's clock, whatever it is. Failure: std::system_error
// from the constructor.
class Program {
 public:
  // folder: for the files, which are named after `name`.
  Program(const std::filesystem::path& folder, const std::string& name, const Words& words);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  [[nodiscard]] pid_t id() const { return m_id; }

  void signal(int number) const;

  // Whether it ends within the limit. It is still to be waited for.
  [[nodiscard]] bool ends(std::chrono::milliseconds limit) const;

  // Waits for its end; 128 + SIGKILL when it had to be killed at the limit.
  Outcome wait(std::chrono::seconds limit = std::chrono::seconds(30));

  // Waits until the text is in what it has written to standard error, behind so many bytes: a
  // host's log is written by a thread of its own. False: it ended or 30 seconds passed without.
  [[nodiscard]] bool says(const std::string& text, std::size_t from = 0) const;

  // What it has written so far.
  [[nodiscard]] std::string out() const;
  [[nodiscard]] std::string err() const;

 private:
  [[nodiscard]] pid_t running() const;

  const std::filesystem::path m_out;
  const std::filesystem::path m_err;
  pid_t m_id = -1;  // -1: reaped
};

}  // namespace integration
