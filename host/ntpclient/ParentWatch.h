#pragma once

#include <chrono>

#include "base/Descriptor.h"

namespace host::ntp {

// Waits that end early when the parent process ends.
// Owner: main. Thread: one. Failure: without pidfd_open, the kernel ends this process with SIGTERM
// when the thread that started it ends.
class ParentWatch {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  enum class Event { timeout, ready, parentGone };

  ParentWatch();
  virtual ~ParentWatch() = default;
  ParentWatch(const ParentWatch&) = delete;
  ParentWatch& operator=(const ParentWatch&) = delete;

  // descriptor: `ready` when it can be read; -1 for none. Virtual so that tests need not wait.
  [[nodiscard]] virtual Event wait(Deadline deadline, int descriptor = -1) const;

 private:
  Descriptor m_parent;
};

}  // namespace host::ntp
