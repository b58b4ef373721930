#include "operator/ClockMoves.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "base/Error.h"
#include "base/Origin.h"
#include "clock/VirtualClock.h"
#include "interpose/ShiftedTime.h"
#include "operator/LocalCall.h"
#include "runtime/Device.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::seconds;
using Nanoseconds = VirtualClock::Nanoseconds;

// Time that passes after a jump over a long distance: long enough for the hourly timer to expire
// once, whenever it is due, and once more for the new time.
constexpr seconds kRearming = std::chrono::hours(2);
constexpr seconds kProbe{1};

// Pauses the clock for as long as the object exists. The destructor restores the former speed,
// unless the pause was made permanent or a speed was set meanwhile.
class ClockPause {
 public:
  explicit ClockPause(VirtualClock& clock) : m_clock(clock), m_speed(clock.speed()) {
    m_clock.setSpeed(0);
    m_setting = m_clock.speedSettings();
  }
  ~ClockPause() {
    if (!m_permanent && m_clock.speedSettings() == m_setting) m_clock.setSpeed(m_speed);
  }
  ClockPause(const ClockPause&) = delete;
  ClockPause& operator=(const ClockPause&) = delete;

  void makePermanent() { m_permanent = true; }

 private:
  VirtualClock& m_clock;
  const double m_speed;
  std::uint64_t m_setting = 0;  // number of the setting that paused the clock
  bool m_permanent = false;
};

// State of a move to a landmark, from its begin to its arrival.
struct LandmarkMove {
  std::shared_ptr<ClockPause> pause;
  time_t target = 0;
};

void settle(VirtualClock& clock) {
  const Nanoseconds limit = clock.uptime() + kSettling;
  while (clock.nextExpiry().value_or(Nanoseconds::max()) <= limit) {
    if (!clock.fireNext()) return;
  }
}

void requireReachable(const VirtualClock& clock, Nanoseconds duration) {
  if (clock.source() == VirtualClock::Source::system) {
    throw Error(
        "this host runs on the system's clock, which cannot be advanced; start it with "
        "--clock virtual");
  }
  if (clock.uptime() + duration > VirtualClock::kLastUptime) {
    throw Error("the virtual clock ends there; restart the host, or use `clock jump`");
  }
}

// The service's timers expire a fraction of a second after the landmark: stop kJumpMargin before
// the timer.
void stopBeforeTimer(VirtualClock& clock) {
  const auto expiry = clock.nextExpiry();
  if (!expiry) return;
  const Nanoseconds late = *expiry - clock.uptime() - kJumpMargin;
  if (late > Nanoseconds::zero() && late < seconds(1)) clock.advance(late);
}

time_t requireNext(const Landmark& landmark, time_t now) {
  if (const auto instant = nextLandmark(landmark, now)) return *instant;
  throw Error(std::string(landmark.missing) + " " + localText(now) + "; " +
              std::string(landmark.remedy));
}

// Returns the uptime at the end of the move. Jumps over most of a long move.
Nanoseconds startMove(Device& device, seconds distance) {
  VirtualClock& clock = device.clock();
  if (distance <= kFarthestAdvance || !followsClock(device)) {
    requireReachable(clock, distance);
    return clock.uptime() + distance;
  }
  const CauseScope cause({"clock", "to"});
  if (!clock.setWall(clock.wall() + distance - kRearming)) {
    throw Error("the landmark is outside the clock's range");
  }
  return clock.uptime() + kRearming;
}

// One second more or less is accepted: the timers are armed a fraction of a second after the
// service's own full seconds.
void requireTimeBefore(Device& device, time_t target) {
  const seconds left(target - serviceTime(device));
  if (left == kJumpMargin || left == kJumpMargin - seconds(1)) return;
  throw Error("the clock has moved, but the service's time is " + localText(target - left.count()) +
              ", and not " + std::to_string(kJumpMargin.count()) + " s before " +
              localText(target));
}

std::string arrivedText(const Landmark& landmark, time_t instant) {
  return "paused " + std::to_string(kJumpMargin.count()) + " s before " +
         std::string(landmark.meaning) + ", " + localText(instant) +
         "; go on with `clock advance 10s` or `clock speed 1`";
}

}  // namespace

ClockMove passTime(Device& device, seconds duration) {
  ClockMove move = passExactly(device, duration);
  move.arrive = [&device] {
    settle(device.clock());
    return std::string();
  };
  return move;
}

time_t serviceTime(Device& device) {
  // The method that returns text, because it works after 2038.
  Method call("getUTCTimeTimeVal", Method::call);
  call.addIntParameter("getUTCTimeTimeValTime", 0, Parameter::in);
  std::string text;
  const auto reply = askService(device, call);
  if (reply && reply->getStringParameter("getUTCTimeTimeValStringReturn", text, Parameter::out)) {
    if (const auto instant = parseInstant(text)) return instant->count();
  }
  return duration_cast<seconds>(device.clock().wall()).count();
}

ClockMove passExactly(Device& device, std::chrono::microseconds duration) {
  const auto begin = [&device, duration] {
    requireReachable(device.clock(), duration);
    return device.clock().uptime() + duration;
  };
  return {begin, [] { return std::string(); }};
}

// A time that was set by hand follows the uptime, and may equal the clock's by chance. So show the
// service a shifted time, without moving the clock. While the clock runs, a second may pass
// meanwhile; then try again. A fast clock always passes one: then trust the record of sets by hand,
// which lacks a set that the machine refused.
bool followsClock(Device& device) {
  constexpr int kTries = 10;
  for (int i = 0; i < kTries; ++i) {
    const time_t before = serviceTime(device);
    const auto shifted = [&device] {
      const ShiftedTime shift(kProbe);
      return serviceTime(device);
    };
    const time_t probed = shifted();
    if (serviceTime(device) == before) return probed != before;
  }
  return !device.clock().setByHand();
}

ClockMove moveBefore(Device& device, const Landmark& landmark) {
  const auto move = std::make_shared<LandmarkMove>();
  const auto begin = [&device, &landmark, move] {
    requireReachable(device.clock(), kRearming);
    auto pause = std::make_shared<ClockPause>(device.clock());
    settle(device.clock());
    const time_t now = serviceTime(device);
    move->target = requireNext(landmark, now);
    const Nanoseconds end = startMove(device, seconds(move->target - now) - kJumpMargin);
    move->pause = std::move(pause);
    return end;
  };
  const auto arrive = [&device, &landmark, move] {
    stopBeforeTimer(device.clock());
    requireTimeBefore(device, move->target);
    move->pause->makePermanent();
    return arrivedText(landmark, move->target);
  };
  return {begin, arrive};
}

}  // namespace host
