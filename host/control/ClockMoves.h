#pragma once

#include <chrono>
#include <ctime>

#include "control/ReadyMadeJump.h"

namespace host {

class Device;

// Moves of a device's clock in the way a tester means them. Thread: the framework's.
// Failure: host::Error, one line, when the clock cannot go there; nothing has moved then, unless
// the line says so.

// Time passes. Timers due a few milliseconds later count as due: the service arms its timers that
// much after the start of a second, and who advances to the full hour wants to see the full hour.
void passTime(Device& device, std::chrono::seconds duration);

// Goes to kJumpMargin before the next such instant and pauses there; returns the instant. Within
// kPassable of it time passes; a farther way is a jump to two hours before it, after which time
// passes, so that the service's timers are armed for the instant in either case. A time that was
// set by hand follows no jump: there, time passes all the way. Returns only when the service's own
// time is the one it says.
time_t goBefore(Device& device, Landmark landmark);

inline constexpr std::chrono::hours kPassable{26};

// The time that the service has, as its own method tells it: not that of the clock after the time
// was set by hand. Seconds since 1970-01-01 UTC.
[[nodiscard]] time_t serviceTime(Device& device);

}  // namespace host
