#include "runtime/EventLoop.h"

#include <fcntl.h>

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <list>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "Logging.h"
#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/WaitMemory.h"
#include "clock/VirtualClock.h"
#include "runtime/TerminationSignals.h"

namespace host {

// Shared with handlers that the clock may still call while the loop is destroyed.
struct EventLoop::Impl {
  explicit Impl(VirtualClock& theClock) : clock(theClock) {}

  // Any thread: the earliest expiry or the speed has changed. Changes are coalesced.
  void scheduleChanged() {
    if (deliveryPending.exchange(true)) return;
    asio::post(io, WaitHandler{deliveryMemory, [this] { deliverDueAndRearm(); }});
  }

  // Delivers the expiries that are due, then arms the timer for the next one.
  void deliverDueAndRearm() {
    deliveryPending = false;
    runDue();
    const auto wait = clock.realTimeToNextExpiry();
    if (!wait) {
      timer.cancel();
    } else if (*wait <= VirtualClock::Nanoseconds::zero()) {
      // Queued behind ready sockets and tasks, so that no speed starves them.
      scheduleChanged();
    } else {
      sleep(*wait);
    }
  }

  // An exception from the service costs only this expiry.
  void runDue() {
    try {
      const auto end = std::chrono::steady_clock::now() + kSliceTime;
      clock.runDue(kSlice, [end] { return std::chrono::steady_clock::now() < end; });
    } catch (const std::exception& error) {
      logAppUni("clockhost", 2, __FILE__, __LINE__, "an expired timer's owner threw \"%s\"",
                error.what());
    }
  }

  void sleep(VirtualClock::Nanoseconds wait) try {
    // A far expiry would overflow the time point, so the timer is armed for a year at most.
    timer.expires_after(std::min<VirtualClock::Nanoseconds>(wait, std::chrono::hours(24 * 365)));
    timer.async_wait(WaitHandler{sleepMemory, [this](const asio::error_code& code) {
                                   if (!code) deliverDueAndRearm();
                                 }});
  } catch (const std::bad_alloc&) {
    scheduleChanged();  // retries after handlers that free memory
  }

  // Wakes the loop for a signal, which run() then handles.
  void waitForSignal() {
    signalled.async_wait(asio::posix::stream_descriptor::wait_read,
                         WaitHandler{signalMemory, [this](const asio::error_code& code) {
                                       if (!code) waitForSignal();
                                     }});
  }

  // Checked before each task, so that queued tasks do not delay the shutdown.
  bool stopped() { return signals && signals->take(); }

  struct Readable {
    asio::posix::stream_descriptor stream;
    asio::steady_timer timer;
    std::chrono::milliseconds delay;
    std::function<void()> task;
    std::shared_ptr<WaitMemory> waitMemory = std::make_shared<WaitMemory>();
  };

  void waitFor(Readable& readable) {
    readable.stream.async_wait(
        asio::posix::stream_descriptor::wait_read,
        WaitHandler{readable.waitMemory, [this, &readable](const asio::error_code& code) {
                      if (!code) runLater(readable);
                    }});
  }

  void runLater(Readable& readable) try {
    readable.timer.expires_after(readable.delay);
    readable.timer.async_wait(
        WaitHandler{readable.waitMemory, [this, &readable](const asio::error_code& code) {
                      if (code) return;
                      runLogged(readable.task);
                      waitFor(readable);
                    }});
  } catch (const std::bad_alloc&) {
    waitFor(readable);  // retries: nothing has been read
  }

  static void runLogged(const std::function<void()>& task) try {
    task();
  } catch (const std::exception& error) {
    logAppUni("clockhost", 2, __FILE__, __LINE__, "a task of the loop threw \"%s\"", error.what());
  }

  // False: the loop is stopped.
  bool runOne() try { return io.run_one() > 0; } catch (const std::bad_alloc&) {
    logAppUni("clockhost", 2, __FILE__, __LINE__, "dropped an event-loop task: out of memory");
    return true;
  }

  VirtualClock& clock;
  asio::io_context io{1};  // one thread runs it
  asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
  asio::steady_timer timer{io};
  std::optional<TerminationSignals> signals;
  asio::posix::stream_descriptor signalled{io};
  std::list<Readable> readables;
  std::atomic<bool> deliveryPending{false};
  // Preallocated: the loop's own waits need no further memory. Each has one operation at a time.
  const std::shared_ptr<WaitMemory> deliveryMemory = std::make_shared<WaitMemory>();
  const std::shared_ptr<WaitMemory> sleepMemory = std::make_shared<WaitMemory>();
  const std::shared_ptr<WaitMemory> signalMemory = std::make_shared<WaitMemory>();
};

EventLoop::EventLoop(VirtualClock& clock) : m_impl(std::make_shared<Impl>(clock)) {
  clock.onScheduleChange([impl = std::weak_ptr(m_impl)] {
    if (const auto alive = impl.lock()) alive->scheduleChanged();
  });
}

EventLoop::~EventLoop() {
  m_impl->clock.onScheduleChange({});
  static_cast<void>(m_impl->signalled.release());
}

void EventLoop::stopOnSignals() {
  m_impl->signals.emplace();
  m_impl->signalled.assign(m_impl->signals->descriptor());
  m_impl->waitForSignal();
}

void EventLoop::run() {
  m_impl->io.restart();
  m_impl->scheduleChanged();
  while (!m_impl->stopped() && m_impl->runOne()) continue;
}

void EventLoop::stop() {
  m_impl->io.stop();
}

void EventLoop::post(std::function<void()> task) {
  asio::post(m_impl->io, std::move(task));
}

void EventLoop::onReadable(int descriptor, std::chrono::milliseconds delay,
                           std::function<void()> task) {
  Descriptor own(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
  if (!own.valid()) {
    throw Error(std::string("cannot wait for a descriptor: ") + strerror(errno));
  }
  asio::posix::stream_descriptor stream(m_impl->io, own.get());
  static_cast<void>(own.release());
  m_impl->readables.push_back(
      {std::move(stream), asio::steady_timer(m_impl->io), delay, std::move(task)});
  m_impl->waitFor(m_impl->readables.back());
}

asio::io_context& EventLoop::io() {
  return m_impl->io;
}

}  // namespace host
