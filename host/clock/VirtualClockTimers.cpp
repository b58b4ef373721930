// The timers of the clock, and the framework thread's ways to drive it.
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

// The framework thread delivers timers, and time stands at the instant of each.
class VirtualClock::Driving {
 public:
  // taken: real time does not count meanwhile; time goes on from where the driving left it.
  enum class RealTime { counts, taken };
  Driving(VirtualClock& clock, RealTime realTime) : m_clock(clock), m_realTime(realTime) {
    const MutexLock lock(m_clock.m_mutex);
    if (m_clock.m_driving) throw std::logic_error("the clock is driven from inside an expiry");
    m_clock.m_driving = true;
    if (realTime == RealTime::taken) m_clock.m_standing = m_clock.now();
  }
  ~Driving() {
    const MutexLock lock(m_clock.m_mutex);
    if (m_realTime == RealTime::taken) m_clock.anchorAt(*m_clock.m_standing);
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

// Every change of the schedule: keeps time where it is, and tells whoever waits for the earliest.
template <class Step>
void VirtualClock::change(Step step) {
  bool tell = false;
  {
    const MutexLock lock(m_mutex);
    // At infinite speed time stands at the earliest expiry, also when that one goes.
    if (std::isinf(m_speed) && !m_standing) m_anchorUptime = now();
    const auto before = earliest();
    step();
    tell = !m_driving && before != earliest();
  }
  if (tell) tellScheduleChange();
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

// An expiry is taken for delivery one by one, never ahead: what is disarmed will not come.
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

std::optional<Nanoseconds> VirtualClock::nextExpiry() const {
  const MutexLock lock(m_mutex);
  return earliest();
}

std::optional<Nanoseconds> VirtualClock::realTimeToNextExpiry() const {
  const MutexLock lock(m_mutex);
  if (m_armed.empty()) return std::nullopt;
  const Nanoseconds left = m_armed.begin()->first - unhinderedNow();
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

void VirtualClock::tellScheduleChange() {
  std::shared_ptr<const std::function<void()>> listener;
  {
    const MutexLock lock(m_mutex);
    listener = m_listener;
  }
  if (listener) (*listener)();
}

// Takes the earliest timer off the schedule, and time to its instant. Null when none is due.
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

// Delivers the earliest expiry up to the limit, or up to now. False when there is none.
bool VirtualClock::deliver(std::optional<Nanoseconds> limit) {
  int id = 0;
  Executable* owner = nullptr;
  {
    const MutexLock lock(m_mutex);
    owner = takeDue(limit ? *limit : unhinderedNow(), id);
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
  if (duration < Nanoseconds::zero()) throw std::invalid_argument("time does not go back");
  static_cast<void>(advanceTo(saturatingSum(uptime(), duration), [] { return true; }));
}

bool VirtualClock::advanceTo(Nanoseconds target, const GoOn& goOn) {
  requireVirtual();
  const Nanoseconds end = std::min(target, kLastUptime);
  bool there = false;
  {
    const Driving driving(*this, Driving::RealTime::taken);
    do {
      there = !deliver(end);
    } while (!there && goOn());
    const MutexLock lock(m_mutex);
    if (there) m_standing = std::max(end, *m_standing);
  }
  tellScheduleChange();
  return there;
}

bool VirtualClock::fireNext() {
  requireVirtual();
  bool fired = false;
  {
    const Driving driving(*this, Driving::RealTime::taken);
    fired = deliver(kLastUptime);
  }
  tellScheduleChange();
  return fired;
}

void VirtualClock::requireVirtual() const {
  if (m_source == Source::system) {
    throw std::logic_error("the system's clock passes time by itself");
  }
}

}  // namespace host
