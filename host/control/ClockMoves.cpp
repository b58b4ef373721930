#include "control/ClockMoves.h"

#include "clock/VirtualClock.h"
#include "control/LocalCall.h"
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

void goFar(VirtualClock& clock, seconds way) {
  if (!clock.setWall(clock.wall() + way - kRearming)) throw Error("the clock cannot go that far");
  clock.advance(kRearming);
}

}  // namespace

void passTime(Device& device, seconds duration) {
  VirtualClock& clock = device.clock();
  requireRoom(clock, duration);
  clock.advance(duration);
  settle(clock);
}

time_t serviceTime(Device& device) {
  Method call("getTimeVal", Method::call);
  int value = 0;
  const auto reply = callService(device, call);
  if (reply && reply->getIntParameter("getTimeValReturn", value, Parameter::out)) return value;
  return duration_cast<seconds>(device.clock().wall()).count();
}

time_t goBefore(Device& device, Landmark landmark) {
  VirtualClock& clock = device.clock();
  requireRoom(clock, kRearming);
  clock.setSpeed(0);
  settle(clock);
  const time_t now = serviceTime(device);
  const auto target = nextLandmark(landmark, now);
  if (!target) throw Error("there is none ahead: " + std::string(rowOf(landmark).meaning));
  const seconds way = seconds(*target - now) - kJumpMargin;
  // A jump moves the clock, and not a time that was set by hand.
  const bool follows = duration_cast<seconds>(clock.wall()).count() == now;
  if (way > kPassable && follows) {
    goFar(clock, way);
  } else {
    requireRoom(clock, way);
    clock.advance(way);
  }
  standBeforeTimer(clock);
  return *target;
}

}  // namespace host
