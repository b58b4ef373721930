#pragma once

// Files that the clock service shares with the rest of the telephone.
namespace DevicePaths {

extern const char* const kFallbackTimeFile;  // the fallback time of older versions, read once
extern const char* const kNtpClientProgram;  // the external NTP client
extern const char* const kNtpClientPipe;     // the client's reports

}  // namespace DevicePaths
