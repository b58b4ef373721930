#include "ClockService/SntpServer.h"

#include <gtest/gtest.h>

namespace {

TEST(SntpServer, AnyAddressesAndNoneAreNoServer) {
  for (const char* const address : {"", "0.0.0.0", "::"})
    EXPECT_FALSE(isConfiguredServer(address)) << "\"" << address << "\"";
}

TEST(SntpServer, EveryOtherTextIsAServer) {
  for (const char* const address : {"192.0.2.1", "2001:db8::1", "::1", "time.example.com", ":",
                                    "0.0.0.1", "0.0.0.0 ", " ::", "0", "[::]"})
    EXPECT_TRUE(isConfiguredServer(address)) << "\"" << address << "\"";
}

}  // namespace
