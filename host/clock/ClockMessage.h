#pragma once

#include <cstdint>

namespace host {

// Messages between the NTP client and the host. The client inherits one end of a pair of sockets
// (SOCK_SEQPACKET) and has no other access to the host. It sends requests to set the clock, each of
// which has an answer. Before the first request it may send a notice that it runs without a system
// call filter, which has no answer. There are no other messages. Integers are in the byte order of
// the machine, as both ends are on it.
struct SetClockRequest {
  std::int64_t seconds;      // since 1970-01-01 UTC, 0 to VirtualClock::kLastWall
  std::int64_t nanoseconds;  // 0-999999999
};
struct SetClockAnswer {
  std::int32_t error;  // 0: the clock is set; else errno, and the clock is unchanged
};
struct NoFilterNotice {
  std::int32_t error;  // errno, 1 or more: why there is no filter
};
static_assert(sizeof(SetClockRequest) == 16 && sizeof(SetClockAnswer) == 4 &&
              sizeof(NoFilterNotice) == 4);

// The environment variable with the number of the client's descriptor.
inline constexpr const char* kClockChannelVariable = "CLOCKHOST_CLOCK_FD";

}  // namespace host
