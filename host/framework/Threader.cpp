#include "Threader.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <memory>
#include <string>

#include "Logging.h"
#include "Threadable.h"
#include "base/LogLevels.h"
#include "base/Mutex.h"
#include "base/StartThread.h"
#include "framework/PluginThread.h"

namespace {

// One thread, from spawn to destroy.
struct Record {
  Threadable* body = nullptr;
  std::string name;  // at most 15 characters, the kernel's bound
  pthread_t thread{};
  host::Mutex mutex;
  std::condition_variable changed;
  bool completed CLOCK_GUARDED_BY(mutex) = false;
};

// All threads from spawn to destroy, by id. Ids start at 1 and are not reused.
class Registry {
 public:
  static Registry& instance() {
    static auto& registry = *new Registry;  // threads may outlive static destruction
    return registry;
  }

  unsigned long nextId() { return ++m_lastId; }

  void add(unsigned long id, std::shared_ptr<Record> record) {
    const host::MutexLock lock(m_mutex);
    m_records.emplace(id, std::move(record));
  }

  std::shared_ptr<Record> find(unsigned long id) {
    const host::MutexLock lock(m_mutex);
    const auto found = m_records.find(id);
    return found == m_records.end() ? nullptr : found->second;
  }

  std::shared_ptr<Record> take(unsigned long id) {
    const host::MutexLock lock(m_mutex);
    const auto node = m_records.extract(id);
    return node.empty() ? nullptr : node.mapped();
  }

 private:
  std::atomic<unsigned long> m_lastId{0};
  host::Mutex m_mutex;
  std::map<unsigned long, std::shared_ptr<Record>> m_records CLOCK_GUARDED_BY(m_mutex);
};

thread_local const Record* t_self = nullptr;  // the record of the calling thread

// An exception out of a thread would terminate the process.
void runBody(Record& record) {
  try {
    record.body->run();
  } catch (const std::exception& error) {
    logAppUni("clockhost", host::kLogError, __FILE__, __LINE__,
              "thread \"%s\" ended by an exception: %s", record.name.c_str(), error.what());
  }
}

void* threadMain(void* argument) {
  host::blockSignals();  // a signal would interrupt the system calls of the body
  const std::unique_ptr<std::shared_ptr<Record>> own(
      static_cast<std::shared_ptr<Record>*>(argument));
  Record& record = **own;
  t_self = &record;
  pthread_setname_np(pthread_self(), record.name.c_str());
  runBody(record);
  const host::MutexLock lock(record.mutex);
  record.completed = true;
  record.changed.notify_all();
  return nullptr;
}

bool setStack(pthread_attr_t& attributes, int stackBytes) {
  if (stackBytes == 0) return true;
  return stackBytes > 0 &&
         pthread_attr_setstacksize(&attributes, static_cast<std::size_t>(stackBytes)) == 0;
}

bool create(const std::shared_ptr<Record>& record, int stackBytes) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  bool created = setStack(attributes, stackBytes);
  if (created) {
    auto argument = std::make_unique<std::shared_ptr<Record>>(record);
    created = pthread_create(&record->thread, &attributes, threadMain, argument.get()) == 0;
    if (created) static_cast<void>(argument.release());  // the thread's now
  }
  pthread_attr_destroy(&attributes);
  return created;
}

constexpr std::size_t kLongestName = 15;

}  // namespace

bool host::onPluginThread() {
  return t_self != nullptr;
}

// Ignores the priority, because raising it needs a privilege.
bool Threader::spawn(unsigned long* threadId, Threadable* body, const char* name,
                     VotkThreadPriority /*priority*/, int stackBytes) {
  if (threadId == nullptr || body == nullptr) return false;
  auto record = std::make_shared<Record>();
  record->body = body;
  record->name = std::string(name == nullptr ? "" : name).substr(0, kLongestName);
  const unsigned long id = Registry::instance().nextId();
  const unsigned long before = *threadId;
  *threadId = id;  // the body may use it at once
  Registry::instance().add(id, record);
  if (create(record, stackBytes)) return true;
  Registry::instance().take(id);
  *threadId = before;
  return false;
}

void Threader::waitForThreadCompletion(unsigned long threadId) {
  const auto record = Registry::instance().find(threadId);
  if (!record || record.get() == t_self) return;  // a thread must not wait for itself
  host::MutexLock lock(record->mutex);
  while (!record->completed) record->changed.wait(lock.native());
}

void Threader::destroy(unsigned long threadId) {
  const auto record = Registry::instance().take(threadId);
  if (!record) return;
  // A thread that destroys itself is freed when it ends.
  if (record.get() == t_self) {
    pthread_detach(record->thread);
  } else {
    pthread_join(record->thread, nullptr);
  }
}
