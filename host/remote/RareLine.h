#pragma once

#include <chrono>
#include <cstdint>

namespace host {

// One kind of refusal or failure in the log: a line in kBetweenLines at most. Each line says how
// many were not logged since the last one. Owner: who refuses. Thread: the loop's.
class RareLine {
 public:
  static constexpr std::chrono::seconds kBetweenLines{10};

  // kind: how each line begins, as "client turned away". Constant text.
  explicit RareLine(const char* kind) : m_kind(kind) {}

  void log(const char* why);

 private:
  const char* const m_kind;
  std::chrono::steady_clock::time_point m_next{};
  std::uint64_t m_untold = 0;  // since the last line
};

}  // namespace host
