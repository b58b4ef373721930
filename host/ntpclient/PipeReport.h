#pragma once

#include <fcntl.h>

#include <chrono>
#include <cstdint>

#include "ntpclient/ParentWatch.h"

namespace host::ntp {

// The service's pipe on the device.
inline constexpr const char* kReportPipe = "/tmp/votk/ipc/ntpclient";

// The only flags that the system call filter allows.
inline constexpr int kPipeFlags = O_WRONLY | O_NONBLOCK | O_CLOEXEC;

enum class ReportResult {
  delivered,
  noListener,  // no process read the report within the limit
  noPipe,      // the path is not a named pipe
  parentGone
};

// Writes one report into the pipe: seconds since 1970-01-01 UTC as 4 bytes, unsigned, in the
// machine's byte order. Waits until a listener has opened the pipe and read the report, but never
// beyond the limit: unread bytes are lost when the last descriptor is closed.
// REQUIRES: SIGPIPE is ignored.
[[nodiscard]] ReportResult reportTime(const char* pipe, std::uint32_t seconds,
                                      std::chrono::milliseconds limit, const ParentWatch& watch);

}  // namespace host::ntp
