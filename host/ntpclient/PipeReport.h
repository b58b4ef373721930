#pragma once

#include <fcntl.h>

#include <chrono>
#include <cstdint>

#include "ntpclient/ParentWatch.h"

namespace host::ntp {

// Where the service hears of a set clock, on the device.
inline constexpr const char* kReportPipe = "/tmp/votk/ipc/ntpclient";

// How it is opened.
inline constexpr int kPipeFlags = O_WRONLY | O_NONBLOCK | O_CLOEXEC;

enum class ReportResult {
  delivered,
  noListener,  // nobody opened the pipe for reading, or read from it, within the limit
  noPipe,      // there is something else at the path
  parentGone
};

// Writes one report into the pipe: 4 bytes, seconds since 1970-01-01 UTC, unsigned, in the
// machine's byte order. Waits up to `limit` for a listener to open the pipe and to take the report:
// the listener reads one report for each opening, and bytes that nobody has read are lost with the
// last descriptor. Never blocks beyond the limit. REQUIRES: SIGPIPE is ignored.
[[nodiscard]] ReportResult reportTime(const char* pipe, std::uint32_t seconds,
                                      std::chrono::milliseconds limit, const ParentWatch& watch);

}  // namespace host::ntp
