#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

namespace host::ntp {

// The clock that follows the server.
// Owner: the client. Thread: one. Failure: host::Error, one line; NoHost when there is no host at
// all. The clock is then as it was.
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

// The virtual clock of the host at a control socket. The request:
//   {"verb":"clock","action":"set","seconds":N,"nanoseconds":M}
// N: since 1970-01-01 UTC, M: 0-999999999. The answer: {"ok":true, ...}, or
// {"ok":false,"error":TEXT}
[[nodiscard]] std::unique_ptr<ClockSetter> makeHostClock(const std::filesystem::path& socket);

// The machine's own clock, which needs the privilege to set it.
[[nodiscard]] std::unique_ptr<ClockSetter> makeSystemClock();

}  // namespace host::ntp
