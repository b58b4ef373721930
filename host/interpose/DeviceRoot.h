#pragma once

#include <string>

namespace host {

// Where the device's absolute paths lie on this machine, so that two hosts stay apart. With a root
// set, paths under /data/ and /tmp/votk/ mean the same path below the root: for hostPath, and for
// each open, fopen and stat of this process and of the plug-ins it loads (not of its children).
// Thread: any; meant to be set before the device starts.

// An absolute path; empty: device paths as they are.
void setDeviceRoot(const std::string& root);
[[nodiscard]] std::string deviceRoot();

// The path on this machine. Other paths, and those below the root already, stay as they are.
[[nodiscard]] std::string hostPath(const std::string& devicePath);

// Where the named pipe of the time reports lies on the device.
inline constexpr const char* kReportPipePath = "/tmp/votk/ipc/ntpclient";

// From then on each open, fopen and stat of kReportPipePath reaches the pipe that this descriptor
// holds, whatever is at the path: only that one is known to be the host's. The descriptor stays the
// caller's; without one, the path is a device path like others. Thread: any.
void setReportPipe(int descriptor);
void dropReportPipe(int descriptor);  // nothing happens when another one was set since

// What a file call with this path reaches on this machine.
[[nodiscard]] std::string reachedPath(const std::string& devicePath);

}  // namespace host
