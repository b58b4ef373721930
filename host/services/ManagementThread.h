#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <thread>

#include "base/Mutex.h"

namespace host {

// Runs management calls on a thread of its own, as a device does, so that agents need their locks.
// Owner: the device; the destructor runs the queued tasks and joins. Thread: any.
// Failure: the constructor throws Error when no thread can be created. An exception from a posted
// task is logged at level 2; one from a task of run() is rethrown to the caller of run().
class ManagementThread {
 public:
  ManagementThread();
  ~ManagementThread();
  ManagementThread(const ManagementThread&) = delete;
  ManagementThread& operator=(const ManagementThread&) = delete;

  // Queues the task; tasks run one by one, in order.
  void post(std::function<void()> task);

  // Drops the queued tasks. A run() that waits for one of them throws std::future_error.
  void dropQueued();

  // Runs the task after all queued ones and waits for it. On the management thread: runs it at
  // once.
  void run(const std::function<void()>& task);

 private:
  using Task = std::function<void()>;

  void work();
  bool waitForTask(MutexLock& lock) CLOCK_REQUIRES(m_mutex);
  static void runLogged(const std::function<void()>& task);

  Mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<Task> m_tasks CLOCK_GUARDED_BY(m_mutex);
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  std::thread m_thread;  // last: it uses all of the above
};

}  // namespace host
