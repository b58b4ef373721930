#pragma once

#include <string>

namespace bench {

// The limit of a figure.
struct Bound {
  enum class Kind {
    ratioAtMost,  // figure / baseline
    ratioAtLeast,
    differenceAtMost,  // figure - baseline
    atMost,            // the figure itself
    exactly,
    none  // information only
  };

  Kind kind;
  double limit;
  bool timed = true;  // false: counted, which is the same on a busy machine

  // factor: 1 or more. A time may be that many times its limit, a rate that many times less. A
  // count keeps its limit.
  [[nodiscard]] Bound widened(double factor) const;
  // compared: the ratio, the difference or the figure, as the kind says.
  [[nodiscard]] bool holds(double compared) const;
  [[nodiscard]] std::string text() const;
};

}  // namespace bench
