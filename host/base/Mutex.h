#pragma once

#include <condition_variable>
#include <mutex>

#include "ThreadSafety.h"

namespace host {

// A std::mutex that the thread safety analysis knows; taken by a MutexLock.
class CLOCK_LOCK Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

 private:
  friend class MutexLock;
  std::mutex m_mutex;
};

// Holds a mutex for the life of a scope, except between unlock() and lock() and while it waits.
class CLOCK_SCOPED_LOCK MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) CLOCK_ACQUIRES(mutex) : m_lock(mutex.m_mutex) {}
  ~MutexLock() CLOCK_RELEASES() {}  // NOLINT(modernize-use-equals-default): attributes need a body
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  void unlock() CLOCK_RELEASES() { m_lock.unlock(); }
  void lock() CLOCK_ACQUIRES() { m_lock.lock(); }

  // For the waits of std::condition_variable.
  std::unique_lock<std::mutex>& native() { return m_lock; }

 private:
  std::unique_lock<std::mutex> m_lock;
};

}  // namespace host
