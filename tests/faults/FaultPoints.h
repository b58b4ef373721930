#pragma once

#include <span>

#include "faults/FailingCalls.h"

namespace faults {

// A call that is made to fail, and what the log then says.
struct FaultPoint {
  const char* name;
  Call call;
  int error;                   // errno
  const char* logged;          // a regular expression that a line of the log matches
  bool quietAtTheEnd = false;  // a failure during the shutdown is not logged
};

// The calls whose failure a telephone must survive.
[[nodiscard]] std::span<const FaultPoint> faultPoints();

}  // namespace faults
