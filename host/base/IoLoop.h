#pragma once

#include <sys/epoll.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <utility>

#include "base/Descriptor.h"
#include "base/Mutex.h"

namespace host {

// Runs the handlers of descriptors, timers and posted tasks, one at a time; sleeps while none is
// ready. A pass of the loop runs the handlers of the ready descriptors, then the tasks that wait,
// in order. Each pass waits with one system call. Owner: the part that runs it; it outlives its
// watches and timers. Thread: one, except post() and stop(). Failure: an exception from a handler
// leaves run() or runOne(), which may be called again.
class IoLoop {
  using TimePoint = std::chrono::steady_clock::time_point;

 public:
  class Watch;
  class Timer;

  // Posting the same task again allocates nothing.
  class Task {
   public:
    explicit Task(std::function<void()> run) : m_run(std::move(run)) {}

   private:
    friend class IoLoop;
    const std::function<void()> m_run;
    std::shared_ptr<Task> m_next;
    std::atomic<bool> m_queued = false;
  };

  IoLoop();  // throws Error
  ~IoLoop();
  IoLoop(const IoLoop&) = delete;
  IoLoop& operator=(const IoLoop&) = delete;

  // Queues the task, unless it is queued already. Any thread.
  void post(std::shared_ptr<Task> task);
  void post(std::function<void()> run) { post(std::make_shared<Task>(std::move(run))); }

  // Calls `readable` each time that the descriptor is readable or hung up. When `readable` returns
  // false or throws, the loop closes the descriptor and destroys `readable`. The loop owns both.
  // Throws Error and std::bad_alloc.
  void watchUntilDone(Descriptor descriptor, std::function<bool()> readable);

  // Whether nothing else waits in this pass of the loop. For handlers of descriptors.
  [[nodiscard]] bool runsTheOnlyHandler() const { return m_eventCount == 1 && !m_tasks; }

  void run();      // until stop()
  bool runOne();   // waits for one handler and runs it. False when the loop is stopped
  void stop();     // any thread, and from a handler
  void restart();  // after stop()

  // For tests: runs what is ready without waiting. Returns the number of handlers that ran.
  std::size_t runAllReady();

 private:
  using Expiries = std::multimap<TimePoint, Timer*>;
  struct WatchUntilDone;

  bool runReady();
  bool wait(bool untilReady);
  void expireFirst();
  void armTimer();
  [[nodiscard]] bool startToWait();
  void takePosted();

  const Descriptor m_epoll;
  const Descriptor m_wake;   // an eventfd
  const Descriptor m_alarm;  // a timerfd, set to the first expiry
  std::array<epoll_event, 64> m_events{};
  std::size_t m_nextEvent = 0;
  std::size_t m_eventCount = 0;
  std::shared_ptr<Task> m_tasks;  // of this pass
  Expiries m_expiries;
  TimePoint m_alarmAt;  // the clock's epoch: the alarm is off
  std::unique_ptr<Watch> m_alarmWatch;
  std::list<WatchUntilDone> m_untilDone;
  std::atomic<bool> m_stopped = false;
  Mutex m_mutex;
  std::shared_ptr<Task> m_posted CLOCK_GUARDED_BY(m_mutex);
  Task* m_lastPosted CLOCK_GUARDED_BY(m_mutex) = nullptr;
  bool m_waiting CLOCK_GUARDED_BY(m_mutex) = false;  // post() has to wake the loop
};

// Calls `ready` in each pass of the loop in which an awaited event of the descriptor is pending.
// Owner: the owner of the handler. The handler may destroy the watch as its last action. The
// descriptor outlives the watch.
class IoLoop::Watch {
 public:
  // events: see await(). Throws Error and std::bad_alloc.
  Watch(IoLoop& loop, int descriptor, std::uint32_t events,
        std::function<void(std::uint32_t)> ready);
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // EPOLLIN, EPOLLOUT, EPOLLHUP or 0 for none. With any of them, EPOLLHUP and EPOLLERR are reported
  // too. Awaiting fewer events makes no system call now. If an event that is no longer awaited
  // happens, the loop then makes one.
  void await(std::uint32_t events);

 private:
  friend class IoLoop;
  bool dispatch(std::uint32_t events);
  void control(int operation);

  IoLoop& m_loop;
  const int m_descriptor;
  std::uint32_t m_awaited;
  std::uint32_t m_reported = 0;  // what the system reports
  const std::function<void(std::uint32_t)> m_ready;
};

// Calls `expired` some time after start(). Owner and destruction: as for a Watch.
class IoLoop::Timer {
 public:
  Timer(IoLoop& loop, std::function<void()> expired);  // throws std::bad_alloc
  ~Timer() { cancel(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  // More would overflow the time point.
  static constexpr std::chrono::hours kLongest{24 * 365};

  // after: at most kLongest. Restarts a running timer. Allocates nothing.
  void start(std::chrono::nanoseconds after);
  void cancel();

 private:
  friend class IoLoop;
  void removeFromQueue();

  IoLoop& m_loop;
  const std::function<void()> m_expired;
  Expiries::node_type m_idle;  // empty while the timer runs
  Expiries::iterator m_running;
};

}  // namespace host
