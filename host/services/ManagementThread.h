#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <thread>

#include "base/Mutex.h"

namespace host {

// The thread that management calls come from, so that the locks of an agent are real.
// Owner: the device; destruction runs what is queued and joins. Thread: any.
// Failure: the constructor throws Error: there is no thread to be had. An exception out of a posted
// task is logged at level 2; run() hands it to its caller.
class ManagementThread {
 public:
  ManagementThread();
  ~ManagementThread();
  ManagementThread(const ManagementThread&) = delete;
  ManagementThread& operator=(const ManagementThread&) = delete;

  // Queues the task; tasks run one by one, in order.
  void post(std::function<void()> task);

  // Queues what nobody waits for: it runs when nothing has been wanted for a moment, or else before
  // the next task does, and so also before tasks that were queued earlier.
  void postForLater(std::function<void()> task);

  // Forgets what is queued, but for what is for later: the end goes first. Whoever waits in run()
  // for a task that is forgotten gets std::future_error.
  void dropQueued();

  // Returns when the task, and all that was queued before it, is done. From a task: runs at once.
  void run(const std::function<void()>& task);

 private:
  using Task = std::function<void()>;

  void work();
  bool waitForTask(MutexLock& lock) CLOCK_REQUIRES(m_mutex);
  Task takeTask() CLOCK_REQUIRES(m_mutex);
  static void runLogged(const std::function<void()>& task);

  Mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<Task> m_tasks CLOCK_GUARDED_BY(m_mutex);
  std::deque<Task> m_later CLOCK_GUARDED_BY(m_mutex);
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  std::thread m_thread;  // last: it uses all of the above
};

}  // namespace host
