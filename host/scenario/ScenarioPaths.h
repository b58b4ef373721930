#pragma once

#include <string>

namespace host {

// Scenarios touch no other files of the machine. Both throw UsageError.

// Unless the path is below /data/ or /tmp/votk/, without "..".
void requireDevicePath(const std::string& path);

// Unless it is such a path, or the bare name of a storage file ("setupTZ.sh").
void requireDevicePathOrStorageName(const std::string& path);

}  // namespace host
