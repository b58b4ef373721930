#pragma once

#include <span>

#include "faults/FailingCalls.h"

namespace faults {

// One row: a call that is made to fail, and what the log then says.
struct FaultPoint {
  const char* name;
  Call call;
  int error;                   // errno
  const char* logged;          // a regular expression that a line of the log matches
  bool quietAtTheEnd = false;  // who makes the call does not care any more once it is to end
};

// What a telephone's life depends on.
[[nodiscard]] std::span<const FaultPoint> faultPoints();

}  // namespace faults
