#include "Semaphore.h"

#include <chrono>
#include <condition_variable>
#include <stdexcept>

#include "base/Mutex.h"

struct Semaphore::Impl {
  Impl(int initialCount, int maximumCount) : maximum(maximumCount), count(initialCount) {}

  const int maximum;
  host::Mutex mutex;
  int count CLOCK_GUARDED_BY(mutex);
  std::condition_variable given;
};

Semaphore::Semaphore(int initialCount, int maximumCount, bool interProcess)
    : m_impl(std::make_unique<Impl>(initialCount, maximumCount)) {
  if (initialCount < 0 || initialCount > maximumCount)
    throw std::invalid_argument("a Semaphore's initial count must be from 0 to its maximum");
  if (interProcess) throw std::invalid_argument("a Semaphore is for one process: pass false");
}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds) {
  Impl& state = *m_impl;
  host::MutexLock lock(state.mutex);
  const auto available = [&]() CLOCK_REQUIRES(state.mutex) { return state.count > 0; };
  if (timeoutMilliseconds < 0) {
    state.given.wait(lock.native(), available);
  } else if (!state.given.wait_for(lock.native(), std::chrono::milliseconds(timeoutMilliseconds),
                                   available)) {
    return false;
  }
  --state.count;
  return true;
}

void Semaphore::give() {
  const host::MutexLock lock(m_impl->mutex);
  if (m_impl->count == m_impl->maximum) return;
  ++m_impl->count;
  m_impl->given.notify_one();
}
