#pragma once

// Where the device keeps what the clock service shares with the rest of the telephone.
namespace DevicePaths {

extern const char* const fallbackTimeFile;  // an older home of the fallback time, read once
extern const char* const ntpClientProgram;  // the external NTP client
extern const char* const ntpClientPipe;     // where that client reports

}  // namespace DevicePaths
