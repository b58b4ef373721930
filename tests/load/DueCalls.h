#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "load/Latencies.h"

namespace load {

// Sends calls, and has the clock that measures them. Owner: a test.
class CallLine {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  virtual ~CallLine() = default;
  [[nodiscard]] virtual Instant now() = 0;

  // Sends a call; does not wait for its reply.
  virtual void call(std::uint32_t number) = 0;

  // Waits for the next reply; returns the number of its call. Empty: there was none until then.
  [[nodiscard]] virtual std::optional<std::uint32_t> replied(Instant until) = 0;
};

// A freeze of 1 s in a minute delays 200 of 12,000 calls: more than one in 100.
inline constexpr std::chrono::milliseconds kBetweenCalls{5};

// Sends a call each kBetweenCalls, whether the earlier ones are answered or not; then waits for the
// last replies. Each call is measured from when it was due, so a freeze delays all calls that are
// due in it. Throws std::runtime_error when one is not answered within 20 s. An interruption ends
// it.
[[nodiscard]] Latencies callWhenDue(CallLine& line, std::chrono::milliseconds duration);

}  // namespace load
