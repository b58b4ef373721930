#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace integration {

using Words = std::vector<std::string>;

// The program as a shell starts it, with its standard descriptors redirected.
[[nodiscard]] Words inShell(const std::string& redirections, const Words& words);

// How a program ended, and what it wrote.
struct Outcome {
  int status;  // exit status, or 128 + signal
  std::string out;
  std::string err;
};

// A program in its own process, with its output in files. Owner: a test. The program cannot set the
// machine's clock. It is killed and reaped by the destructor, and killed when the thread that
// started it ends, and so with the test program. Failure: std::system_error from the constructor.
class Program {
 public:
  // folder: for the files, whose names begin with `name`.
  Program(const std::filesystem::path& folder, const std::string& name, const Words& words);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  [[nodiscard]] pid_t id() const { return m_id; }

  // SIGSTOP: returns once the program is stopped.
  void signal(int number) const;

  // Whether the program ends within the limit. Does not reap it: call wait() afterwards.
  [[nodiscard]] bool ends(std::chrono::milliseconds limit) const;

  // Waits until the program ends. At the limit kills it: status 128 + SIGKILL.
  Outcome wait(std::chrono::seconds limit = std::chrono::seconds(30));

  // Waits until the program has written the text to standard error, after the first `from` bytes. A
  // host writes its log on another thread, so a line may come late. False: the program ended, or 30
  // seconds passed, without the text.
  [[nodiscard]] bool says(const std::string& text, std::size_t from = 0) const;

  // What the program has written so far.
  [[nodiscard]] std::string out() const;
  [[nodiscard]] std::string err() const;

 private:
  [[nodiscard]] pid_t running() const;

  const std::filesystem::path m_out;
  const std::filesystem::path m_err;
  pid_t m_id = -1;  // -1: reaped
};

}  // namespace integration
