#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "load/Latencies.h"

namespace load {

// What calls are sent through, and the clock that they are measured with. Owner: a test.
class Line {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  virtual ~Line() = default;
  [[nodiscard]] virtual Instant now() = 0;

  // Sends a call; does not wait for its reply.
  virtual void call(std::uint32_t number) = 0;

  // Waits for the next reply, and says of which call. Empty: none has come until then.
  [[nodiscard]] virtual std::optional<std::uint32_t> replied(Instant until) = 0;
};

// A freeze of 1 s in a minute delays 200 of 12,000 calls: more than one in 100.
inline constexpr std::chrono::milliseconds kBetweenCalls{5};

// A call each kBetweenCalls for so long, whether the ones before are answered or not; then waits
// for the last replies. Each call is measured from when it was due, so a freeze delays all that are
// due in it. Throws std::runtime_error when one is not answered within 20 s. An interruption ends
// it.
[[nodiscard]] Latencies callWhenDue(Line& line, std::chrono::milliseconds duration);

}  // namespace load
