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

// Goes to kJumpMargin before the next such instant and pauses there. Up to kPassable ahead, time
// passes. A farther landmark is reached by a jump to two hours before it, and then time passes, so
// that the service's timers are armed for the instant in either case. A time that was set by hand
// follows no jump: then time passes all the way. Refused at the end if the service's own time is
// not the expected one.
[[nodiscard]] ClockMove goBefore(Device& device, const Landmark& landmark);

inline constexpr std::chrono::hours kPassable{26};

// The service's time, read by a remote method. After the time was set by hand it differs from the
// clock's. Seconds since 1970-01-01 UTC.
[[nodiscard]] time_t serviceTime(Device& device);

}  // namespace host
