#pragma once

#include <unistd.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace host::ntp {

// Gives this process a standard error of its own whose writes fail when a reader is slow, instead
// of waiting for it. The one that it shares with its parent stays as it is. Where that does not
// work, as with a socket, nothing changes. REQUIRES: no system call filter yet.
void unblockStandardError();

// The client's lines on standard error. No line waits for a reader: one that a full pipe does not
// take is lost. Owner: the client. Thread: one. Failure: none.
class ErrorLines {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  // The client asks its server once in this time.
  static constexpr std::chrono::hours kQuiet{1};

  // The descriptor stays the caller's.
  explicit ErrorLines(int descriptor = STDERR_FILENO) : m_descriptor(descriptor) {}

  // A line each.
  void step(const std::string& what) const;

  // The same complaint again within kQuiet is counted; the next line of it tells the number.
  void complain(const std::string& what, Instant now);

 private:
  struct Run {
    std::optional<Instant> told;
    long more = 0;  // since then, or since the start
  };

  static std::string repeatsText(const Run& run);
  [[nodiscard]] bool write(const std::string& text) const;

  const int m_descriptor;
  std::map<std::string, Run> m_runs;  // few: the client's texts are fixed
};

}  // namespace host::ntp
