#include "DevicePaths.h"

namespace DevicePaths {

const char* const kFallbackTimeFile = "/data/fallback_time.txt";
const char* const kNtpClientProgram = "/sbin/ntpclient";
const char* const kNtpClientPipe = "/tmp/votk/ipc/ntpclient";

}  // namespace DevicePaths
