#pragma once

#include <chrono>
#include <cstdint>

namespace host {

// A rate-limited log line for one kind of refusal or failure: at most one in kBetweenLines, with
// the number of those suppressed since the last one. Owner: who refuses. Thread: the loop's.
// Failure: without memory the line is lost; nothing is thrown.
class RareLine {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds kBetweenLines{10};

  // kind: the beginning of each line, such as "client turned away". Constant text.
  explicit RareLine(const char* kind) : m_kind(kind) {}

  void log(const char* why, Clock::time_point now = Clock::now()) noexcept;

 private:
  const char* const m_kind;
  Clock::time_point m_next{};
  std::uint64_t m_suppressed = 0;  // since the last line
};

}  // namespace host
