#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <string>

#include "verbs/Landmarks.h"

namespace host {

class Device;

// A move of a device's clock in the way a tester means it, for which time has to pass: first
// `begin`, then time passes up to the uptime that it returned, then `arrive`, which returns what
// stays to be said. The device outlives it. Thread: the framework's. Failure: host::Error from
// either, one line, when the clock cannot go there; nothing has moved then, unless the line says
// so. A move that is refused, or goes before it has arrived, leaves the clock at the speed that it
// found, or at the one that was set on the way.
struct ClockMove {
  std::function<std::chrono::nanoseconds()> begin;
  std::function<std::string()> arrive;
};

// Time passes. Timers due a few milliseconds later count as due: the service arms its timers that
// much after the start of a second, and who advances to the full hour wants to see the full hour.
[[nodiscard]] ClockMove passTime(Device& device, std::chrono::seconds duration);

// Goes to kJumpMargin before the next such instant and pauses there. Within
// kPassable of it time passes; a farther way is a jump to two hours before it, after which time
// passes, so that the service's timers are armed for the instant in either case. A time that was
// set by hand follows no jump: there, time passes all the way. Arrives only when the service's own
// time is the one it says.
[[nodiscard]] ClockMove goBefore(Device& device, const Landmark& landmark);

inline constexpr std::chrono::hours kPassable{26};

// The time that the service has, as its own method tells it: not that of the clock after the time
// was set by hand. Seconds since 1970-01-01 UTC.
[[nodiscard]] time_t serviceTime(Device& device);

}  // namespace host
