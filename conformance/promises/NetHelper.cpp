#include "NetHelper.h"

#include <sys/socket.h>

#include <string>
#include <utility>

#include "Promise.h"

namespace {

std::string lookedUp(const char* name, int family, int size = 46) {
  char buffer[64] = "untouched";
  return NetHelper::dnsLookup(name, buffer, size, family) ? buffer : std::string("-") + buffer;
}

class NetHelperPromise : public conformance::Promise {};

TEST_F(NetHelperPromise, DistinguishesKindsOfAddresses) {
  promises(
      "0: not a numeric address. 1: IPv6 (RFC 4291), also in brackets (\"[::1]\"). 2: IPv4 in four "
      "decimal parts.");
  const std::pair<const char*, int> rows[] = {
      {"0.0.0.0", 2}, {"127.0.0.1", 2},        {"255.255.255.255", 2}, {"::", 1},
      {"::1", 1},     {"2001:DB8::ff", 1},     {"1:2:3:4:5:6:7:8", 1}, {"::ffff:1.2.3.4", 1},
      {"[::1]", 1},   {"[::ffff:1.2.3.4]", 1},
  };
  for (const auto& [text, kind] : rows) {
    EXPECT_EQ(NetHelper::verifyIpAddress(text, false), kind) << text;
    EXPECT_EQ(NetHelper::verifyIpAddress(text, true), kind) << text;
  }
}

TEST_F(NetHelperPromise, RefusesOtherTexts) {
  promises("0: not a numeric address.");
  for (
      const char* const text :
      {"",         " ",          "localhost",  "1.2.3",        "1.2.3.4.5",     "256.1.1.1",
       "1.2.3.04", "1.2.3.-4",   "0x7f.0.0.1", "1.2.3.4 ",     " 1.2.3.4",      "1.2.3.4\n",
       "1..3.4",   "2130706433", ":",          ":::",          "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9",
       "12345::",  "g::",        "::1%lo",     "fe80::1%eth0", "[::1",          "::1]",
       "[]",       "[",          "]",          "[1.2.3.4]",    "[[::1]]",       "[::1]]",
       "[::1]x",   "x[::1]"}) {
    EXPECT_EQ(NetHelper::verifyIpAddress(text, false), 0) << text;
    EXPECT_EQ(NetHelper::verifyIpAddress(text, true), 0) << text;
  }
  EXPECT_EQ(NetHelper::verifyIpAddress(std::string("1.2.3.4\0", 8), true), 0);
  EXPECT_EQ(NetHelper::verifyIpAddress(std::string("[::1\0]", 6), true), 0);
}

TEST_F(NetHelperPromise, AcceptsAPortIfAllowed) {
  promises("may follow an IPv4 or a bracketed IPv6 address.");
  const std::pair<const char*, int> rows[] = {
      {"1.2.3.4:1", 2}, {"1.2.3.4:123", 2}, {"1.2.3.4:65535", 2}, {"[::1]:123", 1}};
  for (const auto& [text, kind] : rows) {
    EXPECT_EQ(NetHelper::verifyIpAddress(text, true), kind) << text;
    EXPECT_EQ(NetHelper::verifyIpAddress(text, false), 0) << text;
  }
}

TEST_F(NetHelperPromise, RefusesInvalidPorts) {
  promises("a \":port\", 1-65535, may follow");
  for (const char* const port :
       {":", ":0", ":65536", ":123456", ":-1", ":+1", ": 1", ":1 ", ":x", "::1", "1", ":1:2"}) {
    EXPECT_EQ(NetHelper::verifyIpAddress(std::string("[::1]") + port, true), 0) << port;
    if (port[0] != ':') continue;
    EXPECT_EQ(NetHelper::verifyIpAddress(std::string("1.2.3.4") + port, true), 0) << port;
  }
}

TEST_F(NetHelperPromise, ResolvesNumericAddressesWithoutANameServer) {
  promises("Numeric addresses need no name server");
  EXPECT_EQ(lookedUp("127.0.0.1", 0), "127.0.0.1");
  EXPECT_EQ(lookedUp("127.0.0.1", AF_INET), "127.0.0.1");
  EXPECT_EQ(lookedUp("::1", 0), "::1");
  EXPECT_EQ(lookedUp("0:0:0:0:0:0:0:1", AF_INET6), "::1");
  EXPECT_EQ(lookedUp("::ffff:255.255.255.255", 0), "::ffff:255.255.255.255");
}

TEST_F(NetHelperPromise, RefusesANumericAddressOfTheOtherFamily) {
  promises("family: 0 for either, AF_INET or AF_INET6.");
  EXPECT_EQ(lookedUp("127.0.0.1", AF_INET6), "-untouched");
  EXPECT_EQ(lookedUp("::1", AF_INET), "-untouched");
}

TEST_F(NetHelperPromise, LeavesTheBufferUntouchedWithoutAnAddress) {
  promises("Returns false, and leaves buffer untouched, when `name` has no such address.");
  for (const char* const name : {"", ".", "a b", "-", "1.2.3.4.5", "[::1]"})
    EXPECT_EQ(lookedUp(name, 0), "-untouched") << name;
}

TEST_F(NetHelperPromise, DoesNotWriteBeyondTheBuffer) {
  promises("size: bytes of buffer, 46 holds every address; false if it is too small.");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, 10), "127.0.0.1");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, 9), "-untouched");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, 0), "-untouched");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, -1), "-untouched");
  EXPECT_EQ(lookedUp("1111:2222:3333:4444:5555:6666:7777:8888", 0, 40),
            "1111:2222:3333:4444:5555:6666:7777:8888");
}

TEST_F(NetHelperPromise, AnyThreadMayCall) {
  promises("Names and addresses. Thread: any.");
  conformance::onTwoThreads([] {
    for (int i = 0; i < 100; ++i) {
      const std::string address = "10.0.0." + std::to_string(i);
      EXPECT_EQ(lookedUp(address.c_str(), 0), address);
      EXPECT_EQ(NetHelper::verifyIpAddress(address, false), 2);
    }
  });
}

}  // namespace
