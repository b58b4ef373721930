#pragma once

#include <memory>

#include "ThreadSafety.h"

// A counting semaphore of one process.
// Owner: its creator. Thread: any.
class CLOCK_LOCK Semaphore {
 public:
  // initialCount: 0-maximumCount. interProcess: always false, as the clock shares none with another
  // process. The host throws std::invalid_argument for other values.
  Semaphore(int initialCount, int maximumCount, bool interProcess = false);
  ~Semaphore();
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  // Waits for a count and takes it. timeoutMilliseconds: -1 waits without limit.
  // False when the time ran out; never with -1.
  bool take(int timeoutMilliseconds) CLOCK_TRY_ACQUIRES(true);

  // Gives a count back. One above the maximum is dropped.
  void give() CLOCK_RELEASES();

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};
