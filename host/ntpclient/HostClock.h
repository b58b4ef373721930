#pragma once

#include <chrono>
#include <functional>

#include "base/Descriptor.h"
#include "base/Error.h"

namespace host::ntp {

// The host is gone or has closed the channel: its clock can no longer be set.
struct ChannelClosed : Error {
  using Error::Error;
};

// Sets a clock to a time since 1970-01-01 UTC. Failure: the clock is unchanged. Throws Error with
// one line, or ChannelClosed when further attempts would fail too.
using SetClock = std::function<void(std::chrono::nanoseconds sinceEpoch)>;

// The clock of the host at the other end of the channel; see clock/ClockMessage.h.
// Owner: the program. Thread: one.
class HostClock {
 public:
  explicit HostClock(Descriptor channel) : m_channel(std::move(channel)) {}

  // Sets the clock; throws as SetClock does.
  void set(std::chrono::nanoseconds sinceEpoch) const;

  // Tells the host that this program runs without a system call filter. error: errno, the reason.
  void reportMissingFilter(int error) const;

 private:
  [[nodiscard]] int receiveAnswer() const;

  const Descriptor m_channel;
};

}  // namespace host::ntp
