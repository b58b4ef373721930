// The device's paths for tests: below the folder that the test program works in.

#include "DevicePaths.h"

namespace DevicePaths {

const char* const fallbackTimeFile = "data/fallback_time.txt";
const char* const ntpClientProgram = "sbin/ntpclient";
const char* const ntpClientPipe = "ipc/ntpclient";

}  // namespace DevicePaths
