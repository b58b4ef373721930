#include "runtime/EventLoop.h"

#include <fcntl.h>

#include <algorithm>
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
#include "base/IoLoop.h"
#include "base/LogLevels.h"
#include "base/TerminationSignals.h"
#include "clock/VirtualClock.h"

namespace host {
namespace {

void runLogged(const std::function<void()>& task) try {
  task();
} catch (const std::exception& error) {
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "a task of the loop threw \"%s\"",
            error.what());
}

// Waits for the descriptor, then for the delay; then runs the task.
class Readable {
 public:
  Readable(IoLoop& io, Descriptor own, std::chrono::milliseconds delay, std::function<void()> task)
      : m_own(std::move(own)),
        m_delayed(io,
                  [this, task = std::move(task)] {
                    runLogged(task);
                    m_watch.await(EPOLLIN);
                  }),
        m_watch(io, m_own.get(), EPOLLIN, [this, delay](std::uint32_t) {
          m_watch.await(0);
          m_delayed.start(delay);
        }) {}

 private:
  const Descriptor m_own;
  IoLoop::Timer m_delayed;
  IoLoop::Watch m_watch;
};

}  // namespace

// Shared with handlers that the clock may still call while the loop is destroyed.
struct EventLoop::Impl {
  explicit Impl(VirtualClock& theClock) : clock(theClock) {}

  // Any thread: the earliest expiry or the speed has changed.
  void scheduleChanged() { io.post(delivery); }

  // Delivers the expiries that are due, then arms the timer for the next one.
  void deliverDueAndRearm() {
    runDue();
    const auto wait = clock.realTimeToNextExpiry();
    if (!wait) {
      timer.cancel();
    } else if (*wait <= VirtualClock::Nanoseconds::zero()) {
      // Queued behind ready sockets and tasks, so that no speed starves them.
      scheduleChanged();
    } else {
      timer.start(std::min<VirtualClock::Nanoseconds>(*wait, IoLoop::Timer::kLongest));
    }
  }

  // An exception from the service costs only this expiry.
  void runDue() {
    try {
      const auto end = std::chrono::steady_clock::now() + kSliceTime;
      clock.runDue(kSlice, [end] { return std::chrono::steady_clock::now() < end; });
    } catch (const std::exception& error) {
      logAppUni("clockhost", kLogError, __FILE__, __LINE__, "an expired timer's owner threw \"%s\"",
                error.what());
    }
  }

  // Checked before each task, so that queued tasks do not delay the shutdown.
  bool stopped() { return signals && signals->take(); }

  // False: the loop is stopped.
  bool runOne() try { return io.runOne(); } catch (const std::bad_alloc&) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__,
              "dropped an event-loop task: out of memory");
    return true;
  }

  VirtualClock& clock;
  IoLoop io;
  IoLoop::Timer timer{io, [this] { deliverDueAndRearm(); }};
  const std::shared_ptr<IoLoop::Task> delivery =
      std::make_shared<IoLoop::Task>([this] { deliverDueAndRearm(); });
  std::optional<TerminationSignals> signals;
  std::optional<IoLoop::Watch> signalled;  // wakes the loop, which then asks `signals`
  std::list<Readable> readables;
  std::list<std::optional<IoLoop::Timer>> delayed;  // each removes itself when it has expired
};

EventLoop::EventLoop(VirtualClock& clock) : m_impl(std::make_shared<Impl>(clock)) {
  clock.onScheduleChange([impl = std::weak_ptr(m_impl)] {
    if (const auto alive = impl.lock()) alive->scheduleChanged();
  });
}

EventLoop::~EventLoop() {
  m_impl->clock.onScheduleChange({});
}

void EventLoop::stopOnSignals() {
  m_impl->signals.emplace();
  m_impl->signalled.emplace(m_impl->io, m_impl->signals->descriptor(), EPOLLIN, [](auto) {});
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
  m_impl->io.post(std::move(task));
}

void EventLoop::postAfter(std::chrono::milliseconds delay, std::function<void()> task) {
  auto& delayed = m_impl->delayed;
  const auto timer = delayed.emplace(delayed.end());
  timer->emplace(m_impl->io, [&delayed, timer, task = std::move(task)]() mutable {
    const auto run = std::move(task);
    delayed.erase(timer);
    run();
  });
  (*timer)->start(delay);
}

void EventLoop::onReadable(int descriptor, std::chrono::milliseconds delay,
                           std::function<void()> task) {
  Descriptor own(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
  if (!own.valid()) {
    throw Error(std::string("cannot wait for a descriptor: ") + strerror(errno));
  }
  m_impl->readables.emplace_back(m_impl->io, std::move(own), delay, std::move(task));
}

IoLoop& EventLoop::io() {
  return m_impl->io;
}

}  // namespace host
