#pragma once

#include "Semaphore.h"

// Holds a semaphore for the life of a scope, so that an exception cannot leave it taken.
class SemaphoreGuard {
 public:
  explicit SemaphoreGuard(Semaphore& semaphore) : m_semaphore(semaphore) {
    m_semaphore.take(waitWithoutLimit);
  }
  ~SemaphoreGuard() { m_semaphore.give(); }
  SemaphoreGuard(const SemaphoreGuard&) = delete;
  SemaphoreGuard& operator=(const SemaphoreGuard&) = delete;

 private:
  static constexpr int waitWithoutLimit = -1;
  Semaphore& m_semaphore;
};
