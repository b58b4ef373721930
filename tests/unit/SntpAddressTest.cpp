// The check of the NTP server's address in ClockServiceDataHandler.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsInMemory.h"

namespace {

using unit::SettingsInMemory;

const std::vector<std::string> kAccepted{"192.0.2.1",
                                         "0.0.0.0",
                                         "255.255.255.255",
                                         "::",
                                         "::1",
                                         "2001:db8::1",
                                         "2001:DB8:0:0:0:0:0:1",
                                         "::ffff:192.0.2.1",
                                         "localhost",
                                         "time.example.com",
                                         "Time.example.com",  // other bytes, another address
                                         "ntp-1.example",
                                         "1.pool.example.org",
                                         std::string(63, 'a') + ".example"};
const std::vector<std::string> kRefused{"",
                                        "[2001:db8::1]",
                                        "[::1]",
                                        "[::]",
                                        " ",
                                        "256.1.1.1",
                                        "1.2.3",
                                        "1.2.3.4.5",
                                        "192.0.2.1:123",
                                        "[::1]:123",
                                        "2001:db8::1::2",
                                        "time example",
                                        "-time.example",
                                        "time-.example",
                                        "time..example",
                                        ".example",
                                        "time_1.example",
                                        "time.example;reboot",
                                        std::string(64, 'a') + ".example",
                                        std::string(300, 'a')};

TEST(SntpAddress, NumericAddressesAndHostNamesAreAccepted) {
  SettingsInMemory store;
  const auto settings = store.load();
  for (const std::string& address : kAccepted) {
    EXPECT_TRUE(settings->setSntpAddr(address)) << "\"" << address << "\"";
    EXPECT_EQ(settings->getSntpAddr(), address);
    EXPECT_EQ(store.stored("SNTPaddress"), address);
    EXPECT_FALSE(settings->setSntpAddr(address)) << "unchanged: " << address;
  }
  EXPECT_EQ(store.writes(), kAccepted.size());
}

TEST(SntpAddress, OtherTextIsRefusedAndNotStored) {
  SettingsInMemory store;
  const auto settings = store.load();
  EXPECT_FALSE(settings->setSntpAddr(""));
  EXPECT_TRUE(settings->setSntpAddr("192.0.2.9"));
  for (const std::string& address : kRefused) {
    EXPECT_FALSE(settings->setSntpAddr(address)) << "\"" << address << "\"";
    EXPECT_EQ(settings->getSntpAddr(), "192.0.2.9") << "\"" << address << "\"";
  }
  EXPECT_EQ(store.writes(), 1U);
}

// Loading does not check the address. Setting it again counts as unchanged.
TEST(SntpAddress, StoredAddressIsLoadedUnchecked) {
  SettingsInMemory store;
  store.put("SNTPaddress", "[::1]");
  const auto settings = store.load();
  EXPECT_EQ(settings->getSntpAddr(), "[::1]");
  EXPECT_FALSE(settings->setSntpAddr("[::1]"));
  EXPECT_TRUE(settings->setSntpAddr("::1"));
}

}  // namespace
