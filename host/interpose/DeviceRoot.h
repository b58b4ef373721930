#pragma once

#include <string>

namespace host {

// Maps the device's absolute paths to this machine, so that two hosts do not share files. With a
// root set, paths under /data/ and /tmp/votk/ are relative to the root: for hostPath, and for each
// open, fopen and stat of this process and of the plug-ins it loads (not of its children). Thread:
// any. Set it before the device starts.

// An absolute path; empty: device paths are not mapped.
void setDeviceRoot(const std::string& root);
[[nodiscard]] std::string deviceRoot();

// The path on this machine. Other paths, and those already below the root, are returned unchanged.
[[nodiscard]] std::string hostPath(const std::string& devicePath);

// The device's path of the named pipe for time reports.
inline constexpr const char* kReportPipePath = "/tmp/votk/ipc/ntpclient";

// Makes each open, fopen and stat of kReportPipePath use the pipe of this descriptor, whatever is
// at the path: only that pipe is known to be the host's. The caller keeps the descriptor. Without
// one, the path is mapped like other device paths. Thread: any.
void setReportPipe(int descriptor);
void dropReportPipe(int descriptor);  // no effect when another one was set since

// The path that the file calls use for a path: that of the report pipe's descriptor, or hostPath.
[[nodiscard]] std::string mappedPath(const std::string& devicePath);

}  // namespace host
