#pragma once

#include <atomic>

#include "base/Descriptor.h"
#include "clock/ClockMessage.h"

namespace asio {
class io_context;
}

namespace host {

class VirtualClock;

// A new channel, and the client's end of it, close-on-exec. The loop serves the other end, one
// message a turn, until the client's end is closed; one that ClockMessage.h does not know, and a
// shortage of memory or descriptors, end the channel with a log line. filterMissed: becomes true,
// with a log line, at the first client that has no system call filter. Thread: any. Invalid, with
// errno, when none can be made. Clock and filterMissed outlive the loop's run.
[[nodiscard]] Descriptor openClockChannel(asio::io_context& loop, VirtualClock& clock,
                                          std::atomic<bool>& filterMissed);

}  // namespace host
