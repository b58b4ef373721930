#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace host {

// The timeout of a poll() that ends at the deadline; 0 once it has passed. Rounded up: rounded
// down, the last fraction of a millisecond would be a busy loop.
[[nodiscard]] inline int millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
  constexpr milliseconds::rep kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp<milliseconds::rep>(left.count(), 0, kMost));
}

}  // namespace host
