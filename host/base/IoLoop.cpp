#include "base/IoLoop.h"

#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "base/Error.h"

namespace host {
namespace {

constexpr std::uint32_t kAlways = EPOLLHUP | EPOLLERR;

[[noreturn]] void fail(const char* what) {
  throw Error(std::string(what) + ": " + std::strerror(errno));
}

Descriptor opened(int descriptor) {
  if (descriptor < 0) fail("cannot open the event loop");
  return Descriptor(descriptor);
}

}  // namespace

struct IoLoop::WatchUntilDone {
  WatchUntilDone(IoLoop& loop, Descriptor theDescriptor, std::function<bool()> theReadable)
      : descriptor(std::move(theDescriptor)),
        readable(std::move(theReadable)),
        watch(loop, descriptor.get(), EPOLLIN,
              [this, &all = loop.m_untilDone](std::uint32_t) { run(all); }) {}

  void run(std::list<WatchUntilDone>& all) try {
    if (!readable()) end(all);
  } catch (...) {
    end(all);
    throw;
  }
  void end(std::list<WatchUntilDone>& all) {
    all.remove_if([this](const WatchUntilDone& other) { return &other == this; });
  }

  const Descriptor descriptor;
  const std::function<bool()> readable;
  Watch watch;
};

IoLoop::IoLoop()
    : m_epoll(opened(::epoll_create1(EPOLL_CLOEXEC))),
      m_wake(opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))),
      m_alarm(opened(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))),
      m_alarmWatch(std::make_unique<Watch>(*this, m_alarm.get(), EPOLLIN,
                                           [this](std::uint32_t) { expireFirst(); })) {
  epoll_event woken{};
  woken.events = EPOLLIN | EPOLLET;  // each write is reported once, so it need not be read
  if (::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, m_wake.get(), &woken) != 0) {
    fail("cannot open the event loop");
  }
}

// The handlers first: their destructors may post. Then one task at a time: a long chain of owners
// would need as much stack.
IoLoop::~IoLoop() {
  m_untilDone.clear();
  do {
    while (m_tasks) m_tasks = std::exchange(m_tasks->m_next, nullptr);
    takePosted();
  } while (m_tasks);
}

void IoLoop::post(std::shared_ptr<Task> task) {
  if (task->m_queued.exchange(true)) return;
  const MutexLock lock(m_mutex);
  auto& place = m_posted ? m_lastPosted->m_next : m_posted;
  m_lastPosted = task.get();
  place = std::move(task);
  if (std::exchange(m_waiting, false)) ::eventfd_write(m_wake.get(), 1);
}

void IoLoop::takePosted() {
  const MutexLock lock(m_mutex);
  m_waiting = false;
  m_tasks = std::exchange(m_posted, nullptr);
}

void IoLoop::watchUntilDone(Descriptor descriptor, std::function<bool()> readable) {
  m_untilDone.emplace_back(*this, std::move(descriptor), std::move(readable));
}

void IoLoop::run() {
  while (runOne()) continue;
}

bool IoLoop::runOne() {
  while (!m_stopped) {
    if (runReady()) return true;
    wait(true);
  }
  return false;
}

std::size_t IoLoop::runAllReady() {
  std::size_t ran = 0;
  do {
    while (runReady()) ++ran;
  } while (wait(false));
  return ran;
}

void IoLoop::stop() {
  m_stopped = true;
  const MutexLock lock(m_mutex);
  if (std::exchange(m_waiting, false)) ::eventfd_write(m_wake.get(), 1);
}

void IoLoop::restart() {
  m_stopped = false;
}

bool IoLoop::runReady() {
  while (m_nextEvent < m_eventCount) {
    const epoll_event& event = m_events[m_nextEvent++];
    auto* const watch = static_cast<Watch*>(event.data.ptr);
    if (watch != nullptr && watch->dispatch(event.events)) return true;
  }
  if (!m_tasks) return false;
  const auto task = m_tasks;
  m_tasks = std::exchange(task->m_next, nullptr);
  task->m_queued = false;
  task->m_run();
  return true;
}

bool IoLoop::startToWait() {
  const MutexLock lock(m_mutex);
  return m_waiting = !m_posted && !m_stopped;
}

// False: nothing is ready.
bool IoLoop::wait(bool untilReady) {
  const int limit = untilReady && startToWait() ? -1 : 0;
  const int found =
      ::epoll_wait(m_epoll.get(), m_events.data(), static_cast<int>(m_events.size()), limit);
  m_nextEvent = 0;
  m_eventCount = static_cast<std::size_t>(std::max(found, 0));  // a signal interrupts it
  takePosted();
  return m_eventCount > 0 || m_tasks;
}

// One timer in each pass, so that many do not keep the others waiting.
void IoLoop::expireFirst() {
  Timer* expired = nullptr;
  if (!m_expiries.empty() && m_expiries.begin()->first <= std::chrono::steady_clock::now()) {
    expired = m_expiries.begin()->second;
    expired->removeFromQueue();
  }
  m_alarmAt = TimePoint::min();  // it has gone off
  armTimer();
  if (expired != nullptr) expired->m_expired();
}

void IoLoop::armTimer() {
  const TimePoint next = m_expiries.empty() ? TimePoint() : m_expiries.begin()->first;
  if (std::exchange(m_alarmAt, next) == next) return;
  const std::chrono::nanoseconds when = next.time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(when);
  itimerspec alarm{};
  alarm.it_value.tv_sec = static_cast<time_t>(seconds.count());
  alarm.it_value.tv_nsec = static_cast<long>((when - seconds).count());
  ::timerfd_settime(m_alarm.get(), TFD_TIMER_ABSTIME, &alarm, nullptr);
}

IoLoop::Watch::Watch(IoLoop& loop, int descriptor, std::uint32_t events,
                     std::function<void(std::uint32_t)> ready)
    : m_loop(loop), m_descriptor(descriptor), m_awaited(events), m_ready(std::move(ready)) {
  control(EPOLL_CTL_ADD);
}

// Explicitly: a child process may keep the descriptor's file open.
IoLoop::Watch::~Watch() {
  ::epoll_ctl(m_loop.m_epoll.get(), EPOLL_CTL_DEL, m_descriptor, nullptr);
  for (std::size_t i = m_loop.m_nextEvent; i < m_loop.m_eventCount; ++i) {
    if (m_loop.m_events[i].data.ptr == this) m_loop.m_events[i].data.ptr = nullptr;
  }
}

void IoLoop::Watch::await(std::uint32_t events) {
  m_awaited = events;
  if ((events & ~m_reported) != 0) control(EPOLL_CTL_MOD);
}

// False: no handler was run.
bool IoLoop::Watch::dispatch(std::uint32_t events) {
  const bool awaited = m_awaited != 0 && (events & (m_awaited | kAlways)) != 0;
  if (awaited) {
    m_ready(events);
  } else if (m_reported != m_awaited) {
    control(EPOLL_CTL_MOD);
  }
  return awaited;
}

// Awaiting nothing leaves at most one event: with EPOLLONESHOT the system reports no second one.
void IoLoop::Watch::control(int operation) {
  epoll_event event{};
  event.events = m_awaited == 0 ? std::uint32_t{EPOLLONESHOT} : m_awaited;
  event.data.ptr = this;
  if (::epoll_ctl(m_loop.m_epoll.get(), operation, m_descriptor, &event) != 0) {
    fail("cannot wait for a descriptor");
  }
  m_reported = m_awaited;
}

IoLoop::Timer::Timer(IoLoop& loop, std::function<void()> expired)
    : m_loop(loop), m_expired(std::move(expired)) {
  Expiries one;
  m_idle = one.extract(one.emplace(TimePoint(), this));
}

void IoLoop::Timer::start(std::chrono::nanoseconds after) {
  removeFromQueue();
  m_idle.key() = std::chrono::steady_clock::now() + after;
  m_running = m_loop.m_expiries.insert(std::move(m_idle));
  m_loop.armTimer();
}

void IoLoop::Timer::cancel() {
  removeFromQueue();
  m_loop.armTimer();
}

void IoLoop::Timer::removeFromQueue() {
  if (m_idle.empty()) m_idle = m_loop.m_expiries.extract(m_running);
}

}  // namespace host
