#pragma once

#include <chrono>
#include <memory>

#include "base/Descriptor.h"
#include "base/Error.h"

namespace host::ntp {

// The host is gone, or wants nothing more of this client.
struct ChannelClosed : Error {
  using Error::Error;
};

// The clock that follows the server.
// Owner: the client. Thread: one. Failure: host::Error, one line; ChannelClosed when no later time
// can be set either. The clock is then as it was.
class ClockSetter {
 public:
  virtual ~ClockSetter() = default;

  // sinceEpoch: the time now, since 1970-01-01 UTC.
  virtual void set(std::chrono::nanoseconds sinceEpoch) = 0;

 protected:
  ClockSetter() = default;
  ClockSetter(const ClockSetter&) = delete;
  ClockSetter& operator=(const ClockSetter&) = delete;
};

// Says to the host that this program has no system call filter. error: errno, why not.
void tellNoFilter(const Descriptor& channel, int error);

// The clock of the host at the other end of the channel, as clock/ClockMessage.h describes it.
[[nodiscard]] std::unique_ptr<ClockSetter> makeHostClock(Descriptor channel);

}  // namespace host::ntp
