#pragma once

#include <semaphore.h>

#include <deque>
#include <functional>
#include <thread>

#include "base/Mutex.h"

namespace host {

// Runs management calls on a thread of its own, as a device does, so that agents need their locks.
// The first task starts the thread, because the start of the host has none and would wait for it.
// Owner: the device; the destructor runs the queued tasks and joins. Thread: any.
// Failure: start(), post() and run() log and throw Error when no thread can be created. An
// exception from a posted task is logged at level 2; one from a task of run() is rethrown to its
// caller.
class ManagementThread {
 public:
  ManagementThread() = default;
  ~ManagementThread();
  ManagementThread(const ManagementThread&) = delete;
  ManagementThread& operator=(const ManagementThread&) = delete;

  // Starts the thread, unless it runs.
  void start();

  // Queues the task; tasks run one by one, in order.
  void post(std::function<void()> task);

  // Drops the queued tasks. A run() that waits for one of them throws std::future_error.
  void dropQueued();

  // Runs the task after all queued ones and waits for it. On the management thread: runs it at
  // once.
  void run(const std::function<void()>& task);

 private:
  using Task = std::function<void()>;

  // Counts wakeups. Cheaper than std::condition_variable: after a wait, glibc locks the mutex as
  // contended, and its unlock then makes a system call that wakes no thread.
  class Wakeups {
   public:
    Wakeups() { ::sem_init(&m_count, 0, 0); }
    ~Wakeups() { ::sem_destroy(&m_count); }
    Wakeups(const Wakeups&) = delete;
    Wakeups& operator=(const Wakeups&) = delete;
    void add() { ::sem_post(&m_count); }
    void await();

   private:
    sem_t m_count{};
  };

  void startOnce() CLOCK_REQUIRES(m_mutex);
  void work();
  bool takeTask(Task& task);
  static void runLogged(const std::function<void()>& task);

  Mutex m_mutex;
  Wakeups m_wakeups;  // one for each posted task, and one for the end
  std::deque<Task> m_tasks CLOCK_GUARDED_BY(m_mutex);
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  // Last: it uses all of the above.
  std::thread m_thread CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
