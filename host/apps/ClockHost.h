#pragma once

namespace host {

struct HostOptions;

// Runs the host until SIGINT or SIGTERM, or the scenario asked for. Returns the exit status.
// Thread: its caller becomes the framework thread. Failure: throws host::Error.
[[nodiscard]] int runClockHost(const HostOptions& options);

}  // namespace host
