#include "control/ClockMoves.h"

#include <memory>

#include "clock/VirtualClock.h"
#include "control/LocalCall.h"
#include "control/TimeText.h"
#include "runtime/Device.h"
#include "runtime/Error.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::seconds;
using Nanoseconds = VirtualClock::Nanoseconds;

// The service's own one-shot timers take 1 ms, and may start one another.
constexpr Nanoseconds kSettling = std::chrono::milliseconds(10);
// After a far jump: long enough for the hourly timer to expire wherever it was, and once more.
constexpr seconds kRearming = std::chrono::hours(2);
// Little enough that a reading by another thread meanwhile does no harm.
constexpr seconds kProbe{1};

void settle(VirtualClock& clock) {
  const Nanoseconds limit = clock.uptime() + kSettling;
  while (clock.nextExpiry().value_or(Nanoseconds::max()) <= limit) {
    if (!clock.fireNext()) return;
  }
}

void requireRoom(const VirtualClock& clock, seconds duration) {
  if (clock.source() == VirtualClock::Source::system) {
    throw Error(
        "this host runs on the system's clock, which only passes by itself; start it with "
        "--clock virtual");
  }
  if (clock.uptime() + duration > VirtualClock::kLastUptime) {
    throw Error("the virtual clock ends there; restart the host, or use `clock jump`");
  }
}

// The timers of the landmark are armed a fraction of a second after a full second: stand as long
// before them as before the landmark.
void standBeforeTimer(VirtualClock& clock) {
  const auto expiry = clock.nextExpiry();
  if (!expiry) return;
  const Nanoseconds late = *expiry - clock.uptime() - kJumpMargin;
  if (late > Nanoseconds::zero() && late < seconds(1)) clock.advance(late);
}

const LandmarkName& rowOf(Landmark landmark) {
  for (const LandmarkName& row : landmarkNames()) {
    if (row.landmark == landmark) return row;
  }
  return landmarkNames().front();
}

// Whether the service's time moves with the clock: after it was set by hand it runs on the uptime,
// and may still equal the clock's by chance. So the clock, which is paused, moves a second and
// back.
bool followsClock(Device& device) {
  VirtualClock& clock = device.clock();
  const Nanoseconds wall = clock.wall();
  const time_t before = serviceTime(device);
  if (!clock.setWall(wall + kProbe)) return false;
  const time_t after = serviceTime(device);
  if (!clock.setWall(wall)) throw Error("the clock cannot be set back");
  return after != before;
}

// Jumps over the most of a far way; the uptime at its end.
Nanoseconds uptimeAfter(Device& device, seconds way) {
  VirtualClock& clock = device.clock();
  if (way <= kPassable || !followsClock(device)) {
    requireRoom(clock, way);
    return clock.uptime() + way;
  }
  if (!clock.setWall(clock.wall() + way - kRearming)) throw Error("the clock cannot go that far");
  return clock.uptime() + kRearming;
}

// To the second: the timers are armed a fraction of a second after the service's own full seconds.
void requireStandingBefore(Device& device, time_t target) {
  const seconds left(target - serviceTime(device));
  if (left == kJumpMargin || left == kJumpMargin - seconds(1)) return;
  throw Error("the clock has moved, but the service's time is " + localText(target - left.count()) +
              ", and not " + std::to_string(kJumpMargin.count()) + " s before " +
              localText(target));
}

std::string arrivedText(Landmark landmark, time_t instant) {
  return "paused " + std::to_string(kJumpMargin.count()) + " s before " +
         std::string(rowOf(landmark).meaning) + ", " + localText(instant) +
         "; go on with `clock advance 10s` or `clock speed 1`";
}

}  // namespace

ClockMove passTime(Device& device, seconds duration) {
  const auto begin = [&device, duration] {
    requireRoom(device.clock(), duration);
    return device.clock().uptime() + duration;
  };
  const auto arrive = [&device] {
    settle(device.clock());
    return std::string();
  };
  return {begin, arrive};
}

time_t serviceTime(Device& device) {
  // As text, which goes on after 2038.
  Method call("getUTCTimeTimeVal", Method::call);
  call.addIntParameter("getUTCTimeTimeValTime", 0, Parameter::in);
  std::string text;
  const auto reply = callService(device, call);
  if (reply && reply->getStringParameter("getUTCTimeTimeValStringReturn", text, Parameter::out)) {
    if (const auto instant = parseInstant(text)) return instant->count();
  }
  return duration_cast<seconds>(device.clock().wall()).count();
}

ClockMove goBefore(Device& device, Landmark landmark) {
  const auto instant = std::make_shared<time_t>(0);
  const auto begin = [&device, landmark, instant] {
    requireRoom(device.clock(), kRearming);
    device.clock().setSpeed(0);
    settle(device.clock());
    const time_t now = serviceTime(device);
    const auto target = nextLandmark(landmark, now);
    if (!target) throw Error("there is none ahead: " + std::string(rowOf(landmark).meaning));
    *instant = *target;
    return uptimeAfter(device, seconds(*target - now) - kJumpMargin);
  };
  const auto arrive = [&device, landmark, instant] {
    standBeforeTimer(device.clock());
    requireStandingBefore(device, *instant);
    return arrivedText(landmark, *instant);
  };
  return {begin, arrive};
}

}  // namespace host
