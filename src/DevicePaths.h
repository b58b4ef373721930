#pragma once

// Files that the clock service shares with the rest of the telephone.
namespace DevicePaths {

extern const char* const fallbackTimeFile;  // the fallback time of older versions, read once
extern const char* const ntpClientProgram;  // the external NTP client
extern const char* const ntpClientPipe;     // the client's reports

}  // namespace DevicePaths
