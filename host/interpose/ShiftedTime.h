#pragma once

#include <chrono>

namespace host {

// While it lives, the POSIX `time` of its thread reads so much later than the process clock. The
// clock stays as it is, and so does what other threads read. Owner: a scope, one at a time on a
// thread. Thread: one.
class ShiftedTime {
 public:
  explicit ShiftedTime(std::chrono::seconds later) noexcept;
  ~ShiftedTime();
  ShiftedTime(const ShiftedTime&) = delete;
  ShiftedTime& operator=(const ShiftedTime&) = delete;
};

}  // namespace host
