#pragma once

#include <algorithm>
#include <chrono>

namespace host {

// Sums and conversions that stop at a bound instead of wrapping.
inline std::chrono::nanoseconds saturatingSum(std::chrono::nanoseconds a,
                                              std::chrono::nanoseconds b) {
  using std::chrono::nanoseconds;
  nanoseconds::rep sum = 0;
  if (__builtin_add_overflow(a.count(), b.count(), &sum)) {
    return a.count() < 0 ? nanoseconds::min() : nanoseconds::max();
  }
  return nanoseconds{sum};
}

// Clamped to 0-bound; NaN gives `bound`.
inline std::chrono::nanoseconds boundedTime(long double nanoseconds,
                                            std::chrono::nanoseconds bound) {
  if (!(nanoseconds < static_cast<long double>(bound.count()))) return bound;
  using Count = std::chrono::nanoseconds::rep;
  return std::chrono::nanoseconds{static_cast<Count>(std::max(nanoseconds, 0.0L))};
}

}  // namespace host
