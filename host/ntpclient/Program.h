#pragma once

namespace host::ntp {

// The whole program. Its environment variables:
//   CLOCKHOST_CLOCK_FD  the number of the inherited descriptor by which the clock is set
//   CLOCKHOST_PIPE      where set clocks are reported, instead of the device's path
//   NTPCLIENT_PORT      the server's port, 123
//   NTPCLIENT_RETRY_MS  the shortest wait before another try, for tests: 15000
// Returns the exit status: 2 for a wrong command line or environment, else that of
// Client::run.
[[nodiscard]] int runProgram(int argumentCount, char* const* arguments);

}  // namespace host::ntp
