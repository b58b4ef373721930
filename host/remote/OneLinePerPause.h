#pragma once

#include <chrono>
#include <cstdint>

namespace host {

// Logs one kind of refusal or failure at most once in kPause; the next line says how many were
// suppressed since. Thread: the loop's. Failure: without memory the line is lost; nothing is
// thrown.
class OneLinePerPause {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds kPause{10};

  // kind: the beginning of each line, such as "client turned away". Constant text.
  explicit OneLinePerPause(const char* kind) : m_kind(kind) {}

  void log(const char* why, Clock::time_point now = Clock::now()) noexcept;

 private:
  const char* const m_kind;
  Clock::time_point m_next{};
  std::uint64_t m_suppressed = 0;  // since the last line
};

}  // namespace host
