#include "DevicePaths.h"

namespace DevicePaths {

const char* const fallbackTimeFile = "/data/fallback_time.txt";
const char* const ntpClientProgram = "/sbin/ntpclient";
const char* const ntpClientPipe = "/tmp/votk/ipc/ntpclient";

}  // namespace DevicePaths
