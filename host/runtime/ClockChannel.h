#pragma once

#include <atomic>

#include "base/Descriptor.h"
#include "clock/ClockMessage.h"

namespace host {

class IoLoop;
class VirtualClock;

// Creates a channel through which one NTP client sets the clock, and returns the client's end,
// close-on-exec. The loop serves the host's end, one message a turn, until the client closes its
// end. A message that ClockMessage.h does not define, or a shortage of memory or descriptors, ends
// the channel with a log line. filterMissed: set, with a log line, by the first client without a
// system call filter. Thread: any. Failure: an invalid descriptor, and errno. Clock and
// filterMissed outlive the loop's run.
[[nodiscard]] Descriptor openClockChannel(IoLoop& loop, VirtualClock& clock,
                                          std::atomic<bool>& filterMissed);

}  // namespace host
