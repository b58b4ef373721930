// The device's paths for tests, relative to the working folder of the test program.

#include "DevicePaths.h"

namespace DevicePaths {

const char* const kFallbackTimeFile = "data/fallback_time.txt";
const char* const kNtpClientProgram = "sbin/ntpclient";
const char* const kNtpClientPipe = "ipc/ntpclient";

}  // namespace DevicePaths
