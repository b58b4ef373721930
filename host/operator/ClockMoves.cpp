#include "operator/ClockMoves.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "base/Error.h"
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

// The service's own one-shot timers take 1 ms, and may start one another.
constexpr Nanoseconds kSettling = std::chrono::milliseconds(10);
// After a far jump: long enough for the hourly timer to expire wherever it was, and once more.
constexpr seconds kRearming = std::chrono::hours(2);
constexpr seconds kProbe{1};

// The clock stands while it lives. Then it goes on at its former speed, unless it is to stay, or
// its speed was set meanwhile, to whatever value.
class Standstill {
 public:
  explicit Standstill(VirtualClock& clock) : m_clock(clock), m_speed(clock.speed()) {
    m_clock.setSpeed(0);
    m_setting = m_clock.speedSettings();
  }
  ~Standstill() {
    if (!m_stays && m_clock.speedSettings() == m_setting) m_clock.setSpeed(m_speed);
  }
  Standstill(const Standstill&) = delete;
  Standstill& operator=(const Standstill&) = delete;

  void stay() { m_stays = true; }

 private:
  VirtualClock& m_clock;
  const double m_speed;
  std::uint64_t m_setting = 0;  // its own
  bool m_stays = false;
};

// A way to a landmark, once begun.
struct Journey {
  std::shared_ptr<Standstill> standstill;
  time_t target = 0;
};

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

time_t requireNext(const Landmark& landmark, time_t now) {
  if (const auto instant = nextLandmark(landmark, now)) return *instant;
  throw Error(std::string(landmark.missing) + " " + localText(now) + "; " +
              std::string(landmark.remedy));
}

// Whether the service's time moves with the clock: after it was set by hand it runs on the uptime,
// and may still equal the clock's by chance. So the service is shown another time, and no clock
// moves. REQUIRES: the clock stands.
bool followsClock(Device& device) {
  const time_t before = serviceTime(device);
  const ShiftedTime shift(kProbe);
  return serviceTime(device) != before;
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

std::string arrivedText(const Landmark& landmark, time_t instant) {
  return "paused " + std::to_string(kJumpMargin.count()) + " s before " +
         std::string(landmark.meaning) + ", " + localText(instant) +
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

ClockMove goBefore(Device& device, const Landmark& landmark) {
  const auto journey = std::make_shared<Journey>();
  const auto begin = [&device, &landmark, journey] {
    requireRoom(device.clock(), kRearming);
    auto standstill = std::make_shared<Standstill>(device.clock());
    settle(device.clock());
    const time_t now = serviceTime(device);
    journey->target = requireNext(landmark, now);
    const Nanoseconds end = uptimeAfter(device, seconds(journey->target - now) - kJumpMargin);
    journey->standstill = std::move(standstill);
    return end;
  };
  const auto arrive = [&device, &landmark, journey] {
    standBeforeTimer(device.clock());
    requireStandingBefore(device, journey->target);
    journey->standstill->stay();
    return arrivedText(landmark, journey->target);
  };
  return {begin, arrive};
}

}  // namespace host
