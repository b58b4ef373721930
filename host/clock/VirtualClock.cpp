#include "clock/VirtualClock.h"

#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <stdexcept>

#include "clock/SaturatingTime.h"

namespace host {
namespace {

using Nanoseconds = VirtualClock::Nanoseconds;

Nanoseconds readMachine(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return std::chrono::seconds{now.tv_sec} + Nanoseconds{now.tv_nsec};
}

Nanoseconds realUptime() {
  return readMachine(CLOCK_BOOTTIME);
}
// The event loop waits on the same clock.
Nanoseconds realSteady() {
  return readMachine(CLOCK_MONOTONIC);
}

bool setMachine(Nanoseconds wall) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wall);
  timespec time{};
  time.tv_sec = static_cast<decltype(time.tv_sec)>(seconds.count());
  time.tv_nsec = static_cast<decltype(time.tv_nsec)>((wall - seconds).count());
  if (time.tv_sec != seconds.count()) {  // a device with 32 bits for the time
    errno = EINVAL;
    return false;
  }
  return clock_settime(CLOCK_REALTIME, &time) == 0;
}

// Before the timers of the same instant, even where microseconds are counted from another origin.
constexpr Nanoseconds kBeforeDue = std::chrono::microseconds(10);

thread_local std::optional<Nanoseconds> t_firstAct;

}  // namespace

VirtualClock::VirtualClock(Source source)
    : m_source(source),
      m_real(source == Source::system ? realUptime : realSteady),
      m_anchorReal(m_real()),
      m_speed(source == Source::system ? 1 : 0) {}

VirtualClock::VirtualClock(RealClock real)
    : m_source(Source::virtualTime), m_real(std::move(real)), m_anchorReal(m_real()) {}

Nanoseconds VirtualClock::wall() const {
  if (m_source == Source::system) return readMachine(CLOCK_REALTIME);
  const MutexLock lock(m_mutex);
  return saturatingSum(m_wallAtZero, now());
}

Nanoseconds VirtualClock::uptime() const {
  const MutexLock lock(m_mutex);
  return now();
}

// A step back into another second would show another time.
Nanoseconds VirtualClock::Reading::moment() const {
  using std::chrono::seconds;
  const bool stays =
      std::chrono::floor<seconds>(wall - kBeforeDue) == std::chrono::floor<seconds>(wall) &&
      std::chrono::floor<seconds>(uptime - kBeforeDue) == std::chrono::floor<seconds>(uptime);
  return due && stays ? uptime - kBeforeDue : uptime;
}

VirtualClock::Reading VirtualClock::reading() const {
  const MutexLock lock(m_mutex);
  return readingNow();
}

VirtualClock::Reading VirtualClock::readingNow() const {
  Reading reading;
  reading.uptime = now();
  reading.wall = m_source == Source::system ? readMachine(CLOCK_REALTIME)
                                            : saturatingSum(m_wallAtZero, reading.uptime);
  reading.due = !m_standing && !m_armed.empty() && m_armed.begin()->first <= reading.uptime;
  return reading;
}

std::optional<Nanoseconds> VirtualClock::firstAct() {
  return t_firstAct;
}

void VirtualClock::forgetActs() {
  t_firstAct.reset();
}

void VirtualClock::noteAct() const {
  if (!t_firstAct) t_firstAct = readingNow().moment();
}

bool VirtualClock::setWall(Nanoseconds wall, Setter setter) {
  if (wall < Nanoseconds::zero() || wall > kLastWall) {
    errno = EINVAL;
    return false;
  }
  const bool hand = setter == Setter::hand;
  const Nanoseconds from = hand ? shown() : this->wall();
  if (m_source == Source::system && !setMachine(wall)) return false;
  std::shared_ptr<const WallListener> listener;
  {
    const MutexLock lock(m_mutex);
    const Nanoseconds uptime = now();
    noteAct();
    if (m_source == Source::virtualTime) m_wallAtZero = wall - uptime;
    if (hand) m_handAtZero = wall - std::chrono::floor<std::chrono::seconds>(uptime);
    listener = m_wallListener;
  }
  if (listener && *listener) (*listener)(from, wall, setter);
  return true;
}

Nanoseconds VirtualClock::shown() const {
  {
    const MutexLock lock(m_mutex);
    if (m_handAtZero) return saturatingSum(*m_handAtZero, now());
  }
  return wall();
}

bool VirtualClock::setByHand() const {
  const MutexLock lock(m_mutex);
  return m_handAtZero.has_value();
}

void VirtualClock::onWallSet(WallListener listener) {
  const auto kept = std::make_shared<const WallListener>(std::move(listener));
  const MutexLock lock(m_mutex);
  m_wallListener = kept;
}

double VirtualClock::speed() const {
  const MutexLock lock(m_mutex);
  return m_speed;
}

void VirtualClock::setSpeed(double speed) {
  if (!(speed >= 0)) throw std::invalid_argument("the speed must be 0 or more");
  if (m_source == Source::system && !(speed >= 1 && speed <= 1)) {
    throw std::invalid_argument("the speed of the system clock is 1");
  }
  {
    const MutexLock lock(m_mutex);
    anchorAt(now());
    m_speed = speed;
    ++m_speedSettings;
  }
  callListener();
}

std::uint64_t VirtualClock::speedSettings() const {
  const MutexLock lock(m_mutex);
  return m_speedSettings;
}

// The uptime if time did not stop at armed timers.
Nanoseconds VirtualClock::uptimeWithoutTimers() const {
  if (m_source == Source::system) return m_real();
  if (!(m_speed > 0)) return m_anchorUptime;
  if (std::isinf(m_speed)) return m_armed.empty() ? m_anchorUptime : kLastUptime;
  const Nanoseconds real = m_real() - m_anchorReal;
  const Nanoseconds left = kLastUptime - m_anchorUptime;
  if (m_speed >= 1 && m_speed <= 1)
    return m_anchorUptime + std::min(real, left);  // without rounding
  const auto passed = static_cast<long double>(real.count()) * static_cast<long double>(m_speed);
  return m_anchorUptime + boundedTime(passed, left);
}

Nanoseconds VirtualClock::now() const {
  if (m_standing && m_source == Source::virtualTime) return *m_standing;
  const Nanoseconds uptime = uptimeWithoutTimers();
  if (m_armed.empty() || m_source == Source::system) return uptime;
  return std::min(uptime, m_armed.begin()->first);
}

void VirtualClock::anchorAt(Nanoseconds uptime) {
  m_anchorUptime = uptime;
  m_anchorReal = m_real();
}

}  // namespace host
