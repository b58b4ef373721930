#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace asio {
class io_context;
}

namespace host {

class VirtualClock;

// The framework thread's loop: sockets, posted tasks, timers of the clock, SIGINT and SIGTERM.
// It sleeps until one of them has something: there is no periodic tick.
// Owner: main, on the framework thread. Thread: run() makes its caller the framework thread; post()
// and stop() are anybody's. Failure: an exception out of a task leaves run(), but for
// std::bad_alloc, which costs that task and is logged; one out of an expiry is logged.
class EventLoop {
 public:
  // Expiries delivered in a row before sockets are looked at again, at any speed.
  static constexpr std::size_t kSlice = 64;
  // And as long, of those that take their time.
  static constexpr std::chrono::milliseconds kSliceTime{2};

  // The clock outlives the loop, which is its one onScheduleChange listener.
  explicit EventLoop(VirtualClock& clock);
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  // From now on SIGINT and SIGTERM end run() instead of the process.
  void stopOnSignals();

  // Returns after stop() or a signal. May be called again.
  void run();
  void stop();

  // Queues the task for the framework thread; tasks run in order.
  void post(std::function<void()> task);

  // From now on runs the task so long after the descriptor has something to read, which the task
  // takes. What the task throws is logged. Before run(). The descriptor stays the caller's; the
  // loop keeps one of its own. Throws Error, and std::bad_alloc.
  void onReadable(int descriptor, std::chrono::milliseconds delay, std::function<void()> task);

  // For sockets.
  [[nodiscard]] asio::io_context& io();

 private:
  struct Impl;
  std::shared_ptr<Impl> m_impl;
};

}  // namespace host
