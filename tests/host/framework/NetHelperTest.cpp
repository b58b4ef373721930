#include "NetHelper.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

// None of these may reach a resolver.
TEST(NetHelper, RefusesTextsThatAreNeitherNameNorAddress) {
  for (const char* const name : {"", ".", "1.2.3", "127.1", "0x7f000001.1", "[::1]", "fe80::1%lo",
                                 "a b", "-", "under_score", "1.2.3.4.5", "2130706433"}) {
    char buffer[46] = "";
    EXPECT_FALSE(NetHelper::dnsLookup(name, buffer, sizeof buffer, 0)) << name;
  }
}

TEST(NetHelper, RefusesInvalidArguments) {
  char buffer[46] = "untouched";
  EXPECT_FALSE(NetHelper::dnsLookup(nullptr, buffer, 46, 0));
  EXPECT_FALSE(NetHelper::dnsLookup("127.0.0.1", buffer, 46, AF_UNIX));
  EXPECT_FALSE(NetHelper::dnsLookup("127.0.0.1", nullptr, 46, 0));
  EXPECT_STREQ(buffer, "untouched");
}

}  // namespace
