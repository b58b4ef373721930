#include "Semaphore.h"

#include <pthread.h>
#include <sys/mman.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <new>

namespace {

// The state lies in memory of its own: shared with processes forked later, or private.
struct State {
  pthread_mutex_t mutex;
  pthread_cond_t given;
  int count;
  int maximum;
};

// A process that ended while it held the lock has left a count that is right: it is one word.
void lock(State& state) {
  if (pthread_mutex_lock(&state.mutex) == EOWNERDEAD) pthread_mutex_consistent(&state.mutex);
}

void unlock(State& state) {
  pthread_mutex_unlock(&state.mutex);
}

State* allocate() {
  void* memory =
      mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return new (memory) State{};
}

void initialise(State& state, bool interProcess) {
  pthread_mutexattr_t mutexKind;
  pthread_mutexattr_init(&mutexKind);
  pthread_condattr_t conditionKind;
  pthread_condattr_init(&conditionKind);
  pthread_condattr_setclock(&conditionKind, CLOCK_MONOTONIC);
  if (interProcess) {
    pthread_mutexattr_setpshared(&mutexKind, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&mutexKind, PTHREAD_MUTEX_ROBUST);
    pthread_condattr_setpshared(&conditionKind, PTHREAD_PROCESS_SHARED);
  }
  pthread_mutex_init(&state.mutex, &mutexKind);
  pthread_cond_init(&state.given, &conditionKind);
  pthread_condattr_destroy(&conditionKind);
  pthread_mutexattr_destroy(&mutexKind);
}

timespec deadlineIn(int milliseconds) {
  constexpr long kNanosecondsPerSecond = 1'000'000'000;
  timespec deadline{};
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_sec += milliseconds / 1000;
  deadline.tv_nsec += (milliseconds % 1000) * 1'000'000L;
  if (deadline.tv_nsec >= kNanosecondsPerSecond) {
    deadline.tv_nsec -= kNanosecondsPerSecond;
    ++deadline.tv_sec;
  }
  return deadline;
}

}  // namespace

struct Semaphore::Impl {
  Impl(int initialCount, int maximumCount, bool interProcess)
      : shared(interProcess), state(interProcess ? *allocate() : *new State{}) {
    state.maximum = std::max(maximumCount, 0);
    state.count = std::clamp(initialCount, 0, state.maximum);
    initialise(state, interProcess);
  }
  ~Impl() {
    // Other processes may still use a shared one: only the mapping goes.
    if (shared) {
      munmap(&state, sizeof(State));
      return;
    }
    pthread_cond_destroy(&state.given);
    pthread_mutex_destroy(&state.mutex);
    delete &state;
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  // False when `deadline`, if there is one, has passed.
  bool wait(const timespec* deadline) {
    const int result = deadline == nullptr
                           ? pthread_cond_wait(&state.given, &state.mutex)
                           : pthread_cond_timedwait(&state.given, &state.mutex, deadline);
    if (result == EOWNERDEAD) pthread_mutex_consistent(&state.mutex);
    return result != ETIMEDOUT;
  }

  const bool shared;
  State& state;
};

Semaphore::Semaphore(int initialCount, int maximumCount, bool interProcess)
    : m_impl(std::make_unique<Impl>(initialCount, maximumCount, interProcess)) {}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds) {
  State& state = m_impl->state;
  const bool limited = timeoutMilliseconds >= 0;
  const timespec deadline = limited ? deadlineIn(timeoutMilliseconds) : timespec{};
  lock(state);
  bool waiting = true;
  while (state.count == 0 && waiting) waiting = m_impl->wait(limited ? &deadline : nullptr);
  const bool taken = state.count > 0;
  if (taken) --state.count;
  unlock(state);
  return taken;
}

void Semaphore::give() {
  State& state = m_impl->state;
  lock(state);
  if (state.count < state.maximum) {
    ++state.count;
    pthread_cond_signal(&state.given);
  }
  unlock(state);
}
