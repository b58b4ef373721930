#pragma once

#include <unistd.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace host::ntp {

// Reopens standard error so that writes fail instead of blocking when its reader is slow. The open
// file that this process shares with its parent stays unchanged. Where reopening does not work, as
// for a socket, nothing changes. REQUIRES: no system call filter yet.
void unblockStandardError();

// The client's lines on standard error. They never block: a line that a full pipe does not take is
// lost. Owner: the client. Thread: one. Failure: none.
class ErrorLines {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  // The time that the client waits between two rounds.
  static constexpr std::chrono::hours kQuiet{1};

  // descriptor: remains the caller's.
  explicit ErrorLines(int descriptor = STDERR_FILENO) : m_descriptor(descriptor) {}

  // Writes one line about a step of the client, every time.
  void step(const std::string& what) const;

  // Writes one line about an error. Repeats of the same text within kQuiet are only counted; the
  // next line says how many.
  void complain(const std::string& what, Instant now);

 private:
  struct Complaint {
    std::optional<Instant> written;
    long repeats = 0;  // since then, or since the start
  };

  [[nodiscard]] bool write(const std::string& text) const;

  const int m_descriptor;
  std::map<std::string, Complaint> m_complaints;  // few: the client's texts are fixed
};

}  // namespace host::ntp
