// The device's paths for tests: below the folder that the test program works in.

#include "DevicePaths.h"

namespace DevicePaths {

const char* const kFallbackTimeFile = "data/fallback_time.txt";
const char* const kNtpClientProgram = "sbin/ntpclient";
const char* const kNtpClientPipe = "ipc/ntpclient";

}  // namespace DevicePaths
