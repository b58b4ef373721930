#include "Semaphore.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

struct Semaphore::Impl {
  const int maximum;
  int count;
  std::mutex mutex;
  std::condition_variable given;

  Impl(int initialCount, int maximumCount) : maximum(maximumCount), count(initialCount) {}
};

Semaphore::Semaphore(int initialCount, int maximumCount, bool /*interProcess*/)
    : m_impl(std::make_unique<Impl>(initialCount, maximumCount)) {}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds) {
  std::unique_lock<std::mutex> lock(m_impl->mutex);
  const auto available = [this] { return m_impl->count > 0; };
  if (timeoutMilliseconds < 0) {
    m_impl->given.wait(lock, available);
  } else if (!m_impl->given.wait_for(lock, std::chrono::milliseconds(timeoutMilliseconds),
                                     available)) {
    return false;
  }
  --m_impl->count;
  return true;
}

void Semaphore::give() {
  const std::lock_guard<std::mutex> lock(m_impl->mutex);
  if (m_impl->count == m_impl->maximum) return;
  ++m_impl->count;
  m_impl->given.notify_one();
}
