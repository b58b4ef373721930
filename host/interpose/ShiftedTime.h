#pragma once

#include <chrono>

namespace host {

// While the object exists, the POSIX `time` returns a later time than the process clock on this
// thread; the clock and other threads are not affected. Owner: a scope, one at a time on a thread.
class ShiftedTime {
 public:
  explicit ShiftedTime(std::chrono::seconds later) noexcept;
  ~ShiftedTime();
  ShiftedTime(const ShiftedTime&) = delete;
  ShiftedTime& operator=(const ShiftedTime&) = delete;
};

}  // namespace host
