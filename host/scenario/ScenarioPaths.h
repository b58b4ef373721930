#pragma once

#include <string>

namespace host {

// Scenarios touch no file of the machine. Both throw UsageError.

// REQUIRES of the person: a path below /data/ or /tmp/votk/, without "..".
void requireDevicePath(const std::string& path);

// The same, or the bare name of a storage file ("setupTZ.sh").
void requireDevicePathOrStorageName(const std::string& path);

}  // namespace host
