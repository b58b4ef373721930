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
#include <optional>
#include <string>
#include <utility>

#include "Logging.h"
#include "clock/VirtualClock.h"
#include "runtime/Error.h"
#include "runtime/TerminationSignals.h"

namespace host {

// Shared with what the clock and the io_context still hold when the loop goes.
struct EventLoop::Impl {
  explicit Impl(VirtualClock& theClock) : clock(theClock) {}

  // Any thread: the earliest expiry or the speed has changed. Many changes are one look.
  void scheduleChanged() {
    if (lookPending.exchange(true)) return;
    asio::post(io, [this] { look(); });
  }

  // Delivers what is due, then waits for what is next, or not at all.
  void look() {
    lookPending = false;
    runDue();
    const auto wait = clock.realTimeToNextExpiry();
    if (!wait) {
      timer.cancel();
    } else if (*wait <= VirtualClock::Nanoseconds::zero()) {
      // Behind what sockets and tasks have waiting, so that no speed keeps them out.
      scheduleChanged();
    } else {
      sleep(*wait);
    }
  }

  // The boundary of the host: what a service throws costs this expiry, and time goes on.
  void runDue() {
    try {
      const auto end = std::chrono::steady_clock::now() + kSliceTime;
      clock.runDue(kSlice, [end] { return std::chrono::steady_clock::now() < end; });
    } catch (const std::exception& error) {
      logAppUni("clockhost", 2, __FILE__, __LINE__, "an expired timer's owner threw \"%s\"",
                error.what());
    }
  }

  void sleep(VirtualClock::Nanoseconds wait) {
    // A far expiry would overflow the time point; the loop then looks again in a year.
    timer.expires_after(std::min<VirtualClock::Nanoseconds>(wait, std::chrono::hours(24 * 365)));
    timer.async_wait([this](const asio::error_code& code) {
      if (!code) look();
    });
  }

  // A signal that comes while the loop sleeps wakes it, and run() sees to the rest.
  void waitForSignal() {
    signalled.async_wait(asio::posix::stream_descriptor::wait_read,
                         [this](const asio::error_code& code) {
                           if (!code) waitForSignal();
                         });
  }

  // Asked before each task, so that no queue of them comes before the end.
  bool stopped() { return signals && signals->take(); }

  struct Readable {
    Readable(asio::io_context& io, int descriptor, std::chrono::milliseconds theDelay,
             std::function<void()> theTask)
        : stream(io, descriptor), timer(io), delay(theDelay), task(std::move(theTask)) {}
    asio::posix::stream_descriptor stream;
    asio::steady_timer timer;
    const std::chrono::milliseconds delay;
    std::function<void()> task;
  };

  void waitFor(Readable& readable) {
    readable.stream.async_wait(asio::posix::stream_descriptor::wait_read,
                               [this, &readable](const asio::error_code& code) {
                                 if (!code) runLater(readable);
                               });
  }

  void runLater(Readable& readable) {
    readable.timer.expires_after(readable.delay);
    readable.timer.async_wait([this, &readable](const asio::error_code& code) {
      if (code) return;
      readable.task();
      waitFor(readable);
    });
  }

  VirtualClock& clock;
  asio::io_context io{1};  // one thread runs it
  asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
  asio::steady_timer timer{io};
  std::optional<TerminationSignals> signals;
  asio::posix::stream_descriptor signalled{io};
  std::list<Readable> readables;
  std::atomic<bool> lookPending{false};
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
  while (!m_impl->stopped() && m_impl->io.run_one() > 0) continue;
}

void EventLoop::stop() {
  m_impl->io.stop();
}

void EventLoop::post(std::function<void()> task) {
  asio::post(m_impl->io, std::move(task));
}

void EventLoop::onReadable(int descriptor, std::chrono::milliseconds delay,
                           std::function<void()> task) {
  const int own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  if (own < 0) throw Error(std::string("a descriptor cannot be waited for: ") + strerror(errno));
  m_impl->waitFor(m_impl->readables.emplace_back(m_impl->io, own, delay, std::move(task)));
}

asio::io_context& EventLoop::io() {
  return m_impl->io;
}

}  // namespace host
