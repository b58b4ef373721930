#pragma once

#include "Semaphore.h"
#include "ThreadSafety.h"

// Holds a semaphore for the life of a scope, so that an exception cannot leave it taken. The thread
// safety analysis does not know that a wait without limit always succeeds, hence unchecked.
class CLOCK_SCOPED_LOCK SemaphoreGuard {
 public:
  explicit SemaphoreGuard(Semaphore& semaphore) CLOCK_ACQUIRES(semaphore) CLOCK_UNCHECKED_LOCKING
      : m_semaphore(semaphore) {
    m_semaphore.take(kWaitWithoutLimit);
  }
  ~SemaphoreGuard() CLOCK_RELEASES() CLOCK_UNCHECKED_LOCKING { m_semaphore.give(); }
  SemaphoreGuard(const SemaphoreGuard&) = delete;
  SemaphoreGuard& operator=(const SemaphoreGuard&) = delete;

 private:
  static constexpr int kWaitWithoutLimit = -1;
  Semaphore& m_semaphore;
};
