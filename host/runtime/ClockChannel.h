#pragma once

#include "clock/ClockMessage.h"
#include "remote/Descriptor.h"

namespace asio {
class io_context;
}

namespace host {

class VirtualClock;

// A new channel, and the client's end of it, close-on-exec. The loop serves the other end, one
// request a turn, until the client's end is closed; any other message, and a shortage of memory or
// descriptors, end the channel with a log line. Thread: any. Invalid, with errno, when none can be
// made. The clock outlives the loop's run.
[[nodiscard]] Descriptor openClockChannel(asio::io_context& loop, VirtualClock& clock);

}  // namespace host
