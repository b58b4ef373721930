#include "services/ManagementThread.h"

#include <exception>
#include <future>
#include <memory>
#include <utility>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "base/StartThread.h"

namespace host {
namespace {

thread_local const ManagementThread* t_running = nullptr;  // on its thread

}  // namespace

ManagementThread::~ManagementThread() {
  {
    const MutexLock lock(m_mutex);
    m_ending = true;
  }
  m_wakeups.add();
  if (m_thread.joinable()) m_thread.join();
}

void ManagementThread::start() {
  const MutexLock lock(m_mutex);
  startOnce();
}

void ManagementThread::startOnce() {
  if (m_thread.joinable()) return;
  try {
    m_thread = startThread("management thread", [this] { work(); });
  } catch (const Error& error) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__, "%s", error.what());
    throw;
  }
}

void ManagementThread::post(std::function<void()> task) {
  {
    const MutexLock lock(m_mutex);
    startOnce();
    m_tasks.push_back(std::move(task));
  }
  m_wakeups.add();
}

void ManagementThread::dropQueued() {
  std::deque<Task> dropped;  // destroyed without the lock, because destructors may take locks
  const MutexLock lock(m_mutex);
  m_tasks.swap(dropped);
}

void ManagementThread::run(const std::function<void()>& task) {
  if (t_running == this) return task();
  // Shared, because this thread may return while the other one is still in set_value.
  auto done = std::make_shared<std::promise<void>>();
  std::future<void> result = done->get_future();
  post([&task, done = std::move(done)] {  // the only owner: a dropped task breaks the promise
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
  t_running = this;
  for (Task task; takeTask(task); task = nullptr) runLogged(task);
}

// False: the queue is empty and the thread must end.
bool ManagementThread::takeTask(Task& task) {
  for (;;) {
    m_wakeups.await();
    const MutexLock lock(m_mutex);
    if (m_tasks.empty() && m_ending) return false;
    if (m_tasks.empty()) continue;  // dropQueued took it
    task = std::move(m_tasks.front());
    m_tasks.pop_front();
    return true;
  }
}

void ManagementThread::Wakeups::await() {
  while (::sem_wait(&m_count) != 0) continue;  // interrupted by a signal
}

void ManagementThread::runLogged(const std::function<void()>& task) {
  try {
    task();
  } catch (const std::exception& error) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__, "management task threw \"%s\"",
              error.what());
  } catch (...) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__, "management task threw");
  }
}

}  // namespace host
