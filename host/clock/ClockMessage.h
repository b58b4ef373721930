#pragma once

#include <cstdint>

namespace host {

// The NTP client's one way into the host: a pair of sockets (SOCK_SEQPACKET), of which it inherits
// one end. It sends requests to set the clock and gets an answer to each. Before the first one it
// may say that it works without a system call filter, which has no answer. There is no other
// message in either direction. Integers are in the machine's byte order: both ends are on this
// machine.
struct SetClockRequest {
  std::int64_t seconds;      // since 1970-01-01 UTC, 0 to the last time that a clock can be set to
  std::int64_t nanoseconds;  // 0-999999999
};
struct SetClockAnswer {
  std::int32_t error;  // 0: the clock is set; else errno, and the clock is as it was
};
struct NoFilterNotice {
  std::int32_t error;  // errno, 1 or more: why there is no filter
};
static_assert(sizeof(SetClockRequest) == 16 && sizeof(SetClockAnswer) == 4 &&
              sizeof(NoFilterNotice) == 4);

// The environment variable with the number of the client's descriptor.
inline constexpr const char* kClockChannelVariable = "CLOCKHOST_CLOCK_FD";

}  // namespace host
