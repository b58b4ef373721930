#pragma once

#include <string>

#include "Findings.h"

namespace bench {

// What is demanded of a figure.
struct Bound {
  enum class Kind {
    ratioAtMost,  // figure / floor
    ratioAtLeast,
    differenceAtMost,  // figure - floor
    atMost,            // the figure alone
    exponentAtMost,    // the same; 1 is the best there can be
    between,           // exactly one of the numbers from `other` to `limit`
    none               // told, and held to nothing
  };

  Kind kind;
  double limit;
  double other = 0;
  bool timed = true;  // a machine that is shared may take longer; it may not count wrongly

  // factor: 1 or more. What is timed may take that many times the limit; at least it must do the
  // limit's part that is as many times less; an exponent's part above 1 may be that many times as
  // large. What is counted is held to the same.
  [[nodiscard]] Bound widened(double factor) const;
  [[nodiscard]] bool holds(const Measured& measured) const;
  [[nodiscard]] std::string text() const;
};

}  // namespace bench
