#include "plugin/WatchedCalls.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace {

std::mutex g_mutex;
std::set<unsigned int> g_sleeps;  // guarded by g_mutex
std::atomic<int> g_closes{0};

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
unsigned int __wrap_sleep(unsigned int seconds);
int __real_close(int descriptor);
int __wrap_close(int descriptor);

unsigned int __wrap_sleep(unsigned int seconds) {
  {
    const std::lock_guard guard(g_mutex);
    g_sleeps.insert(seconds);
  }
  std::this_thread::yield();
  return 0;
}

int __wrap_close(int descriptor) {
  ++g_closes;
  return __real_close(descriptor);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace plugin {

void forgetCalls() {
  const std::lock_guard guard(g_mutex);
  g_sleeps.clear();
  g_closes = 0;
}

std::set<unsigned int> sleeps() {
  const std::lock_guard guard(g_mutex);
  return g_sleeps;
}

int closes() {
  return g_closes;
}

}  // namespace plugin
