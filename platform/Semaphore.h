#pragma once

#include <memory>

// A counting semaphore.
// Owner: its creator. Thread: any.
class Semaphore {
 public:
  // initialCount: 0-maximumCount. interProcess: shared with other processes.
  Semaphore(int initialCount, int maximumCount, bool interProcess = false);
  ~Semaphore();
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  // Waits for a count and takes it. timeoutMilliseconds: -1 waits without limit.
  // False when the time ran out; never with -1.
  bool take(int timeoutMilliseconds);

  // Gives a count back. One above the maximum is dropped.
  void give();

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};
