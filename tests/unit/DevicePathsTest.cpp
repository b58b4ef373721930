// The paths that ship. Other tests link their own in their place.

#include "DevicePaths.h"

#include <gtest/gtest.h>

namespace {

TEST(DevicePaths, AreThoseOfTheDevice) {
  EXPECT_STREQ(DevicePaths::kFallbackTimeFile, "/data/fallback_time.txt");
  EXPECT_STREQ(DevicePaths::kNtpClientProgram, "/sbin/ntpclient");
  EXPECT_STREQ(DevicePaths::kNtpClientPipe, "/tmp/votk/ipc/ntpclient");
}

}  // namespace
