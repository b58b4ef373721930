#pragma once

namespace host {

struct HostOptions;

// Runs the host until SIGINT or SIGTERM, or a scenario to its end. Returns the exit status.
// Thread: the caller's becomes the framework thread. Failure: throws host::Error.
[[nodiscard]] int runClockHost(const HostOptions& options);

}  // namespace host
