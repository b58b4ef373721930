#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace host {

class IoLoop;
class VirtualClock;

// The framework thread's loop: sockets, posted tasks, timers of the clock, SIGINT and SIGTERM.
// It sleeps until one of them is ready; there is no periodic tick.
// Owner: main, on the framework thread. Thread: run() makes its caller the framework thread; any
// thread may call post() and stop(). Failure: an exception from a task leaves run(), except
// std::bad_alloc, which is logged and costs that task; an exception from a timer's owner is logged.
class EventLoop {
 public:
  // The most expiries delivered before sockets and tasks get their turn, at any speed.
  static constexpr std::size_t kSlice = 64;
  // The same in time, for timer owners that are slow.
  static constexpr std::chrono::milliseconds kSliceTime{2};

  // The clock outlives the loop, which is its only onScheduleChange listener.
  explicit EventLoop(VirtualClock& clock);
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  // From now on SIGINT and SIGTERM make run() return, before the next task (TerminationSignals).
  void stopOnSignals();

  // Returns after stop() or a signal. May be called again.
  void run();
  void stop();

  // Queues the task for the framework thread; tasks run in order. run() throws what a task throws,
  // except std::bad_alloc, which is logged.
  void post(std::function<void()> task);

  // Runs the task after `delay` of real time. REQUIRES: framework thread.
  void postAfter(std::chrono::milliseconds delay, std::function<void()> task);

  // Runs the task `delay` after each time that the descriptor becomes readable. The task must read
  // it; exceptions of the task are logged. The loop keeps a duplicate of the descriptor.
  // REQUIRES: called before run(), or by a task. Throws Error and std::bad_alloc.
  void onReadable(int descriptor, std::chrono::milliseconds delay, std::function<void()> task);

  // For sockets.
  [[nodiscard]] IoLoop& io();

 private:
  struct Impl;
  std::shared_ptr<Impl> m_impl;
};

}  // namespace host
