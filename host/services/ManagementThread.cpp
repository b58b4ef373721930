#include "services/ManagementThread.h"

#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <utility>

#include "Logging.h"
#include "runtime/StartThread.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kMoment{10};

}  // namespace

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

void ManagementThread::postForLater(std::function<void()> task) {
  {
    const MutexLock lock(m_mutex);
    m_later.push_back(std::move(task));
  }
  m_wake.notify_one();
}

void ManagementThread::dropQueued() {
  std::deque<Task> dropped;  // their ends may take locks of their own
  const MutexLock lock(m_mutex);
  m_tasks.swap(dropped);
}

void ManagementThread::run(const std::function<void()>& task) {
  if (std::this_thread::get_id() == m_thread.get_id()) return task();
  // Shared: this thread may go on while the other is still inside set_value.
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
    const Task task = takeTask();
    lock.unlock();
    runLogged(task);
    lock.lock();
  }
}

// False: the end has come, and all is done.
bool ManagementThread::waitForTask(MutexLock& lock) {
  const auto wanted = [this]() CLOCK_REQUIRES(m_mutex) { return m_ending || !m_tasks.empty(); };
  m_wake.wait(lock.native(),
              [&]() CLOCK_REQUIRES(m_mutex) { return wanted() || !m_later.empty(); });
  if (!m_later.empty()) m_wake.wait_for(lock.native(), kMoment, wanted);
  return !m_later.empty() || !m_tasks.empty();
}

ManagementThread::Task ManagementThread::takeTask() {
  std::deque<Task>& tasks = m_later.empty() ? m_tasks : m_later;
  Task task = std::move(tasks.front());
  tasks.pop_front();
  return task;
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
