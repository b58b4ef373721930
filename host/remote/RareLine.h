#pragma once

#include <chrono>
#include <cstdint>

namespace host {

// One kind of refusal or failure in the log: a line in kBetweenLines at most. Each line says how
// many were not logged since the last one. Owner: who refuses. Thread: the loop's. Failure: without
// memory a line is lost; nothing is thrown.
class RareLine {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds kBetweenLines{10};

  // kind: how each line begins, as "client turned away". Constant text.
  explicit RareLine(const char* kind) : m_kind(kind) {}

  void log(const char* why, Clock::time_point now = Clock::now()) noexcept;

 private:
  const char* const m_kind;
  Clock::time_point m_next{};
  std::uint64_t m_untold = 0;  // since the last line
};

}  // namespace host
