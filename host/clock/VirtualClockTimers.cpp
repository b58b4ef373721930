// The timers of the clock, and the calls with which the framework thread drives it.
#include <cmath>
#include <stdexcept>
#include <tuple>

#include "Executable.h"
#include "clock/SaturatingTime.h"
#include "clock/VirtualClock.h"

namespace host {
namespace {

using Nanoseconds = VirtualClock::Nanoseconds;

// The event loop asks again after this long.
constexpr Nanoseconds kLongestWait = std::chrono::hours{24 * 365};

}  // namespace

// During its lifetime the framework thread delivers timers, and time stands still at each one's
// instant.
class VirtualClock::Driving {
 public:
  // ignored: virtual time continues afterwards where the delivery left it, however long that took.
  enum class RealTime { counts, ignored };
  Driving(VirtualClock& clock, RealTime realTime) : m_clock(clock), m_realTime(realTime) {
    const MutexLock lock(m_clock.m_mutex);
    if (m_clock.m_driving) throw std::logic_error("the clock cannot be advanced from an expiry");
    m_clock.m_driving = true;
    if (realTime == RealTime::ignored) m_clock.m_standing = m_clock.now();
  }
  ~Driving() {
    const MutexLock lock(m_clock.m_mutex);
    if (m_realTime == RealTime::ignored) m_clock.anchorAt(*m_clock.m_standing);
    m_clock.m_standing.reset();
    m_clock.m_driving = false;
  }
  Driving(const Driving&) = delete;
  Driving& operator=(const Driving&) = delete;

 private:
  VirtualClock& m_clock;
  const RealTime m_realTime;
};

std::optional<Nanoseconds> VirtualClock::earliest() const {
  if (m_armed.empty()) return std::nullopt;
  return m_armed.begin()->first;
}

// Runs `step`, which changes the schedule. Virtual time does not change by it. Calls the listener
// if the earliest expiry changes.
template <class Step>
void VirtualClock::change(Step step) {
  bool changed = false;
  {
    const MutexLock lock(m_mutex);
    // At infinite speed time is at the earliest expiry, and stays there when that timer is removed.
    if (std::isinf(m_speed) && !m_standing) m_anchorUptime = now();
    const auto before = earliest();
    step();
    changed = !m_driving && before != earliest();
  }
  if (changed) callListener();
}

int VirtualClock::createTimer(Executable& owner, Nanoseconds period) {
  if (period < Nanoseconds::zero()) return 0;
  const MutexLock lock(m_mutex);
  const int id = m_lastId + 1;
  m_timers.emplace(id, Timer{&owner, period, std::nullopt});
  m_lastId = id;
  return id;
}

void VirtualClock::startTimer(int timer) {
  change([&]() CLOCK_REQUIRES(m_mutex) {
    const auto found = m_timers.find(timer);
    if (found == m_timers.end()) return;
    noteAct();
    const Nanoseconds expiry = saturatingSum(now(), found->second.period);
    disarm(timer, found->second);
    if (m_source == Source::virtualTime && expiry > kLastUptime) return;
    m_armed.emplace(expiry, timer);
    found->second.expiry = expiry;
  });
}

void VirtualClock::stopTimer(int timer) {
  change([&]() CLOCK_REQUIRES(m_mutex) {
    const auto found = m_timers.find(timer);
    if (found != m_timers.end()) disarm(timer, found->second);
  });
}

// stopTimer is enough: delivery takes one timer at a time, and only an armed one.
void VirtualClock::cancelTimer(int timer) {
  stopTimer(timer);
}

void VirtualClock::deleteTimer(int timer) {
  change([&]() CLOCK_REQUIRES(m_mutex) {
    const auto found = m_timers.find(timer);
    if (found == m_timers.end()) return;
    disarm(timer, found->second);
    m_timers.erase(found);
  });
}

void VirtualClock::disarm(int id, Timer& timer) {
  if (!timer.expiry) return;
  m_armed.erase({*timer.expiry, id});
  timer.expiry.reset();
}

std::optional<Nanoseconds> VirtualClock::expiryOf(int timer) const {
  const MutexLock lock(m_mutex);
  const auto found = m_timers.find(timer);
  return found == m_timers.end() ? std::nullopt : found->second.expiry;
}

std::optional<Nanoseconds> VirtualClock::nextExpiry() const {
  const MutexLock lock(m_mutex);
  return earliest();
}

std::optional<Nanoseconds> VirtualClock::realTimeToNextExpiry() const {
  const MutexLock lock(m_mutex);
  if (m_armed.empty()) return std::nullopt;
  const Nanoseconds left = m_armed.begin()->first - uptimeWithoutTimers();
  if (left <= Nanoseconds::zero()) return Nanoseconds::zero();
  if (!(m_speed > 0)) return std::nullopt;
  const auto real = static_cast<long double>(left.count()) / static_cast<long double>(m_speed);
  return boundedTime(std::ceil(real), kLongestWait);
}

std::size_t VirtualClock::armedTimers() const {
  const MutexLock lock(m_mutex);
  return m_armed.size();
}

std::uint64_t VirtualClock::expiriesDelivered() const {
  const MutexLock lock(m_mutex);
  return m_delivered;
}

void VirtualClock::onScheduleChange(std::function<void()> listener) {
  auto shared = std::make_shared<const std::function<void()>>(std::move(listener));
  const MutexLock lock(m_mutex);
  m_listener = *shared ? std::move(shared) : nullptr;
}

void VirtualClock::callListener() {
  std::shared_ptr<const std::function<void()>> listener;
  {
    const MutexLock lock(m_mutex);
    listener = m_listener;
  }
  if (listener) (*listener)();
}

// Disarms the earliest timer and sets the time to its instant. Null when none is due.
Executable* VirtualClock::takeDue(Nanoseconds limit, int& id) {
  if (m_armed.empty() || m_armed.begin()->first > limit) return nullptr;
  Nanoseconds expiry{0};
  std::tie(expiry, id) = *m_armed.begin();
  Timer& timer = m_timers.at(id);
  disarm(id, timer);
  m_standing = expiry;
  if (std::isinf(m_speed)) m_anchorUptime = expiry;
  ++m_delivered;
  return timer.owner;
}

// Delivers the earliest timer due by the limit, or by now. False when there is none.
bool VirtualClock::deliver(std::optional<Nanoseconds> limit) {
  int id = 0;
  Executable* owner = nullptr;
  {
    const MutexLock lock(m_mutex);
    owner = takeDue(limit ? *limit : uptimeWithoutTimers(), id);
  }
  if (owner == nullptr) return false;
  owner->timerEvent(id);
  return true;
}

std::size_t VirtualClock::runDue(std::size_t most, const GoOn& goOn) {
  const Driving driving(*this, Driving::RealTime::counts);
  std::size_t delivered = 0;
  while (delivered < most && deliver(std::nullopt)) {
    ++delivered;
    if (goOn && !goOn()) break;
  }
  return delivered;
}

void VirtualClock::advance(Nanoseconds duration) {
  requireVirtual();
  if (duration < Nanoseconds::zero()) throw std::invalid_argument("the clock cannot go back");
  static_cast<void>(advanceTo(saturatingSum(uptime(), duration), [] { return true; }));
}

bool VirtualClock::advanceTo(Nanoseconds target, const GoOn& goOn) {
  requireVirtual();
  const Nanoseconds end = std::min(target, kLastUptime);
  bool reached = false;
  {
    const Driving driving(*this, Driving::RealTime::ignored);
    do {
      reached = !deliver(end);
    } while (!reached && goOn());
    const MutexLock lock(m_mutex);
    if (reached) m_standing = std::max(end, *m_standing);
  }
  callListener();
  return reached;
}

bool VirtualClock::fireNext() {
  requireVirtual();
  bool fired = false;
  {
    const Driving driving(*this, Driving::RealTime::ignored);
    fired = deliver(kLastUptime);
  }
  callListener();
  return fired;
}

void VirtualClock::requireVirtual() const {
  if (m_source == Source::system) {
    throw std::logic_error("the system clock cannot be advanced");
  }
}

}  // namespace host
