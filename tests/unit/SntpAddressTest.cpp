// The check of the NTP server's address in ClockServiceDataHandler.

#include <gtest/gtest.h>

#include <string>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsStore.h"

namespace {

using unit::SettingsStore;

TEST(SntpAddress, NumericAddressesAndHostNamesAreAccepted) {
  const std::string longLabel(63, 'a');
  for (const std::string& address :
       {std::string("192.0.2.1"), std::string("0.0.0.0"), std::string("255.255.255.255"),
        std::string("::"), std::string("::1"), std::string("2001:db8::1"),
        std::string("2001:DB8:0:0:0:0:0:1"), std::string("::ffff:192.0.2.1"),
        std::string("localhost"), std::string("time.example.com"), std::string("ntp-1.example"),
        std::string("1.pool.example.org"), longLabel + ".example"}) {
    SettingsStore store;
    const auto settings = store.load();
    EXPECT_TRUE(settings->setSntpAddr(address)) << "\"" << address << "\"";
    EXPECT_EQ(settings->getSntpAddr(), address);
    EXPECT_EQ(store.stored("SNTPaddress"), address);
    EXPECT_EQ(store.writes(), 1U) << "\"" << address << "\"";
  }
}

TEST(SntpAddress, OtherTextIsRefusedAndNotStored) {
  const std::string longLabel(64, 'a');
  for (const std::string& address :
       {std::string("[2001:db8::1]"), std::string("[::1]"), std::string("[::]"), std::string(" "),
        std::string("256.1.1.1"), std::string("1.2.3"), std::string("1.2.3.4.5"),
        std::string("192.0.2.1:123"), std::string("[::1]:123"), std::string("2001:db8::1::2"),
        std::string("time example"), std::string("-time.example"), std::string("time-.example"),
        std::string("time..example"), std::string(".example"), std::string("time_1.example"),
        std::string("time.example;reboot"), longLabel + ".example", std::string(300, 'a')}) {
    SettingsStore store;
    const auto settings = store.load();
    EXPECT_TRUE(settings->setSntpAddr("192.0.2.9"));
    EXPECT_FALSE(settings->setSntpAddr(address)) << "\"" << address << "\"";
    EXPECT_EQ(settings->getSntpAddr(), "192.0.2.9") << "\"" << address << "\"";
    EXPECT_EQ(store.writes(), 1U) << "\"" << address << "\"";
  }
}

TEST(SntpAddress, EmptyTextIsCheckedLikeAnyOther) {
  SettingsStore store;
  const auto settings = store.load();
  EXPECT_FALSE(settings->setSntpAddr(""));
  EXPECT_TRUE(settings->setSntpAddr("192.0.2.9"));
  EXPECT_FALSE(settings->setSntpAddr(""));
  EXPECT_EQ(settings->getSntpAddr(), "192.0.2.9");
  EXPECT_EQ(store.writes(), 1U);
}

TEST(SntpAddress, UnchangedAddressIsRefusedAndNotStored) {
  SettingsStore store;
  const auto settings = store.load();
  EXPECT_TRUE(settings->setSntpAddr("time.example.com"));
  EXPECT_FALSE(settings->setSntpAddr("time.example.com"));
  EXPECT_EQ(settings->getSntpAddr(), "time.example.com");
  EXPECT_EQ(store.writes(), 1U);
  EXPECT_TRUE(settings->setSntpAddr("Time.example.com"));  // other bytes, another address
  EXPECT_EQ(store.writes(), 2U);
}

// A stored address is not checked when it is loaded; setting it again counts as unchanged.
TEST(SntpAddress, LoadedAddressIsTakenAsItIs) {
  SettingsStore store;
  store.put("SNTPaddress", "[::1]");
  const auto settings = store.load();
  EXPECT_EQ(settings->getSntpAddr(), "[::1]");
  EXPECT_FALSE(settings->setSntpAddr("[::1]"));
  EXPECT_TRUE(settings->setSntpAddr("::1"));
}

}  // namespace
