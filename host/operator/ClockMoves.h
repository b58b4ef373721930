#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <string>

#include "verbs/Landmarks.h"

namespace host {

class Device;

// A move of a device's clock during which time passes. `begin` returns the uptime up to which time
// passes; then `arrive` returns a note for the reply (empty: none). The device outlives the move.
// Thread: the framework's. Failure: host::Error from either, one line; the clock has then not
// moved, unless the line says so. A move that is refused, or dropped before it arrives, leaves the
// clock at the speed that it had before, or that was set meanwhile.
struct ClockMove {
  std::function<std::chrono::nanoseconds()> begin;
  std::function<std::string()> arrive;
};

// Advances by `duration`. Timers due a few milliseconds later count as due: the service arms its
// timers that much after the start of a second, and an advance to the full hour is to reach the
// hour's timer.
[[nodiscard]] ClockMove passTime(Device& device, std::chrono::seconds duration);

// Advances by exactly `duration`, for a replay: timers due later are not delivered (passTime
// delivers those within kSettling).
[[nodiscard]] ClockMove passExactly(Device& device, std::chrono::microseconds duration);

// Whether the service's time follows the clock; after it was set by hand, it does not.
[[nodiscard]] bool followsClock(Device& device);

// Moves to kJumpMargin before the next instant of the landmark, and pauses. Up to kFarthestAdvance
// ahead, time passes. Farther ahead, the clock jumps to two hours before the landmark, and time
// passes from there. Either way the service's timers are armed for the landmark. A time that was
// set by hand does not follow a jump: then time passes all the way. Refused at the end if the
// service's own time is not the expected one.
[[nodiscard]] ClockMove moveBefore(Device& device, const Landmark& landmark);

inline constexpr std::chrono::hours kFarthestAdvance{26};

// How much later than the end of an advance a timer may be due. The service's own one-shot timers
// take 1 ms, and may start each other.
inline constexpr std::chrono::milliseconds kSettling{10};

// The service's time, read by a remote method. After the time was set by hand it differs from the
// clock's. Seconds since 1970-01-01 UTC.
[[nodiscard]] time_t serviceTime(Device& device);

}  // namespace host
