#pragma once

#include <chrono>

#include "base/Descriptor.h"

namespace host::ntp {

// Waits that end when the process that started this one is gone.
// Owner: main. Thread: one. Failure: where the system cannot watch a process, a signal ends this
// one together with the thread that started it.
class ParentWatch {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  enum class Event { timeout, ready, parentGone };

  ParentWatch();
  virtual ~ParentWatch() = default;
  ParentWatch(const ParentWatch&) = delete;
  ParentWatch& operator=(const ParentWatch&) = delete;

  // descriptor: to be read from; -1 for a wait alone.
  // A test puts its own in the place, and so waits for nothing.
  [[nodiscard]] virtual Event wait(Deadline deadline, int descriptor = -1) const;

 private:
  Descriptor m_parent;
};

}  // namespace host::ntp
