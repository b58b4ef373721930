#include "simulation/world/DeviceParts.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>

#include "Threadable.h"
#include "Threader.h"

namespace simulation {
namespace {

// The threads of the device, by id.
class Threads {
 public:
  unsigned long start(Threadable* body, unsigned long* id) {
    const std::lock_guard lock(m_mutex);
    *id = ++m_last;
    m_threads[m_last] = std::thread([body] { body->run(); });
    return m_last;
  }
  void join(unsigned long id) {
    std::thread thread = take(id);
    if (thread.joinable()) thread.join();
  }

 private:
  std::thread take(unsigned long id) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_threads.find(id);
    if (found == m_threads.end()) return {};
    std::thread thread = std::move(found->second);
    m_threads.erase(found);
    return thread;
  }

  std::mutex m_mutex;  // guards what follows
  unsigned long m_last = 0;
  std::map<unsigned long, std::thread> m_threads;
};

Threads& threads() {
  static Threads all;
  return all;
}

}  // namespace

DeviceParts& deviceParts() {
  static DeviceParts parts;
  return parts;
}

}  // namespace simulation

bool Threader::spawn(unsigned long* threadId, Threadable* body, const char*, VotkThreadPriority,
                     int) {
  simulation::threads().start(body, threadId);
  return true;
}

void Threader::waitForThreadCompletion(unsigned long threadId) {
  if (const auto& tell = simulation::deviceParts().beforeWaiting) tell();
  simulation::threads().join(threadId);
}

void Threader::destroy(unsigned long threadId) {
  simulation::threads().join(threadId);
}

extern "C" {

void srand(unsigned int seed) noexcept {
  simulation::deviceParts().random.seed(seed);
}

int rand() noexcept {
  return simulation::deviceParts().random.next();
}

// The simulated power cut is no power cut of this machine.
int fsync(int) {
  return 0;
}
}
