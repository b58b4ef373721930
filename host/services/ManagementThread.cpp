#include "services/ManagementThread.h"

#include <exception>
#include <future>
#include <memory>
#include <utility>

#include "Logging.h"
#include "base/StartThread.h"

namespace host {

ManagementThread::ManagementThread()
    : m_thread(startThread("management thread", [this] { work(); })) {}

ManagementThread::~ManagementThread() {
  {
    const MutexLock lock(m_mutex);
    m_ending = true;
  }
  m_wake.notify_one();
  m_thread.join();
}

void ManagementThread::post(std::function<void()> task) {
  {
    const MutexLock lock(m_mutex);
    m_tasks.push_back(std::move(task));
  }
  m_wake.notify_one();
}

void ManagementThread::dropQueued() {
  std::deque<Task> dropped;  // destroyed without the lock, because destructors may take locks
  const MutexLock lock(m_mutex);
  m_tasks.swap(dropped);
}

void ManagementThread::run(const std::function<void()>& task) {
  if (std::this_thread::get_id() == m_thread.get_id()) return task();
  // Shared, because this thread may return while the other one is still in set_value.
  const auto done = std::make_shared<std::promise<void>>();
  std::future<void> result = done->get_future();
  post([&task, done] {
    try {
      task();
      done->set_value();
    } catch (...) {
      done->set_exception(std::current_exception());
    }
  });
  result.get();
}

void ManagementThread::work() {
  MutexLock lock(m_mutex);
  while (waitForTask(lock)) {
    const Task task = std::move(m_tasks.front());
    m_tasks.pop_front();
    lock.unlock();
    runLogged(task);
    lock.lock();
  }
}

// False: the queue is empty and the thread must end.
bool ManagementThread::waitForTask(MutexLock& lock) {
  m_wake.wait(lock.native(),
              [this]() CLOCK_REQUIRES(m_mutex) { return m_ending || !m_tasks.empty(); });
  return !m_tasks.empty();
}

void ManagementThread::runLogged(const std::function<void()>& task) {
  try {
    task();
  } catch (const std::exception& error) {
    logAppUni("clockhost", 2, __FILE__, __LINE__, "management task threw \"%s\"", error.what());
  } catch (...) {
    logAppUni("clockhost", 2, __FILE__, __LINE__, "management task threw");
  }
}

}  // namespace host
