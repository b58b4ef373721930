#include "NetHelper.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>

#include "platform/BoundedLookup.h"
#include "platform/FailedLookups.h"
#include "support/LogCapture.h"

namespace {

using namespace std::chrono_literals;

constexpr const char* kUntouched = "untouched";

std::string lookedUp(const char* name, int family, int size = 46) {
  char buffer[64] = "untouched";
  return NetHelper::dnsLookup(name, buffer, size, family) ? buffer : std::string("-") + buffer;
}

TEST(NetHelper, TellsAddressesApart) {
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

TEST(NetHelper, KnowsWhatIsNoAddress) {
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

TEST(NetHelper, LetsAPortFollowWhereItIsAllowed) {
  const std::pair<const char*, int> rows[] = {
      {"1.2.3.4:1", 2}, {"1.2.3.4:123", 2}, {"1.2.3.4:65535", 2}, {"[::1]:123", 1}};
  for (const auto& [text, kind] : rows) {
    EXPECT_EQ(NetHelper::verifyIpAddress(text, true), kind) << text;
    EXPECT_EQ(NetHelper::verifyIpAddress(text, false), 0) << text;
  }
}

TEST(NetHelper, RefusesWhatIsNoPort) {
  for (const char* const port :
       {":", ":0", ":65536", ":123456", ":-1", ":+1", ": 1", ":1 ", ":x", "::1", "1", ":1:2"}) {
    EXPECT_EQ(NetHelper::verifyIpAddress(std::string("[::1]") + port, true), 0) << port;
    if (port[0] != ':') continue;
    EXPECT_EQ(NetHelper::verifyIpAddress(std::string("1.2.3.4") + port, true), 0) << port;
  }
}

TEST(NetHelper, HandsNumericAddressesBack) {
  EXPECT_EQ(lookedUp("127.0.0.1", 0), "127.0.0.1");
  EXPECT_EQ(lookedUp("127.0.0.1", AF_INET), "127.0.0.1");
  EXPECT_EQ(lookedUp("::1", 0), "::1");
  EXPECT_EQ(lookedUp("0:0:0:0:0:0:0:1", AF_INET6), "::1");
  EXPECT_EQ(lookedUp("::ffff:255.255.255.255", 0), "::ffff:255.255.255.255");
}

TEST(NetHelper, RefusesANumericAddressOfTheOtherFamily) {
  EXPECT_EQ(lookedUp("127.0.0.1", AF_INET6), "-untouched");
  EXPECT_EQ(lookedUp("::1", AF_INET), "-untouched");
}

// None of these is a name: no resolver hears of it.
TEST(NetHelper, RefusesWhatIsNeitherNameNorAddress) {
  for (const char* const name : {"", ".", "1.2.3", "127.1", "0x7f000001.1", "[::1]", "fe80::1%lo",
                                 "a b", "-", "under_score", "1.2.3.4.5", "2130706433"}) {
    EXPECT_EQ(lookedUp(name, 0), "-untouched") << name;
  }
}

TEST(NetHelper, WritesOnlyWhatFits) {
  EXPECT_EQ(lookedUp("127.0.0.1", 0, 10), "127.0.0.1");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, 9), "-untouched");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, 0), "-untouched");
  EXPECT_EQ(lookedUp("127.0.0.1", 0, -1), "-untouched");
  EXPECT_EQ(lookedUp("1111:2222:3333:4444:5555:6666:7777:8888", 0, 40),
            "1111:2222:3333:4444:5555:6666:7777:8888");
}

TEST(NetHelper, RefusesWhatItCannotWorkWith) {
  char buffer[46] = "untouched";
  EXPECT_FALSE(NetHelper::dnsLookup(nullptr, buffer, 46, 0));
  EXPECT_FALSE(NetHelper::dnsLookup("127.0.0.1", buffer, 46, AF_UNIX));
  EXPECT_FALSE(NetHelper::dnsLookup("127.0.0.1", nullptr, 46, 0));
  EXPECT_STREQ(buffer, kUntouched);
}

// A resolver that answers when it is told to.
class SlowResolver {
 public:
  std::optional<std::string> resolve() {
    std::unique_lock lock(m_mutex);
    ++m_asked;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_answering; });
    ++m_returned;
    m_changed.notify_all();
    return "192.0.2.1";
  }
  void answer() {
    const std::lock_guard lock(m_mutex);
    m_answering = true;
    m_changed.notify_all();
  }
  void awaitReturns(int number) {
    std::unique_lock lock(m_mutex);
    EXPECT_TRUE(m_changed.wait_for(lock, 20s, [&] { return m_returned == number; }));
  }
  int asked() {
    const std::lock_guard lock(m_mutex);
    return m_asked;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_answering = false;
  int m_asked = 0;
  int m_returned = 0;
};

// Each with no memory of the others' names.
class NameLookup : public ::testing::Test {
 protected:
  NameLookup() { host::failedLookups().forgetAll(); }
};

TEST_F(NameLookup, GivesTheAnswer) {
  EXPECT_EQ(
      host::boundedLookup("a.example", 20s, [] { return std::optional<std::string>("192.0.2.9"); }),
      "192.0.2.9");
  EXPECT_EQ(host::boundedLookup("b.example", 20s, [] { return std::optional<std::string>(); }),
            std::nullopt);
}

TEST_F(NameLookup, TakesAFailingResolverForNoAnswer) {
  const auto fail = []() -> std::optional<std::string> { throw std::runtime_error("on purpose"); };
  EXPECT_EQ(host::boundedLookup("c.example", 20s, fail), std::nullopt);
}

TEST_F(NameLookup, GivesUpOnASlowResolverAndSurvivesItsReturn) {
  const auto resolver = std::make_shared<SlowResolver>();
  EXPECT_EQ(host::boundedLookup("d.example", 1ms, [=] { return resolver->resolve(); }),
            std::nullopt);
  resolver->answer();
  resolver->awaitReturns(1);
}

TEST_F(NameLookup, WaitsForNoOtherNameWhileTheServerIsSilent) {
  const support::LogCapture log(3);
  const auto resolver = std::make_shared<SlowResolver>();
  const auto resolve = [=] { return resolver->resolve(); };
  EXPECT_EQ(host::boundedLookup("e.example", 1ms, resolve), std::nullopt);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(host::boundedLookup("f.example", 20s, resolve), std::nullopt);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
  EXPECT_EQ(log.count("name lookup of \"e.example\": no answer within 1 ms; next try after 60 s"),
            1U);
  EXPECT_EQ(log.count("name lookup of \"f.example\": not waited for, the name server did not "
                      "answer for another name; next try after 60 s"),
            1U);
  resolver->answer();
  resolver->awaitReturns(2);
}

TEST_F(NameLookup, DoesNotWaitAgainForASilentServerOnAnotherNetwork) {
  const auto resolver = std::make_shared<SlowResolver>();
  const auto resolve = [=] { return resolver->resolve(); };
  EXPECT_EQ(host::boundedLookup("j.example", 1ms, resolve), std::nullopt);
  for (int i = 0; i < 2; ++i) {
    host::failedLookups().allowAll();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(host::boundedLookup("j.example", 20s, resolve), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
  }
  resolver->answer();
  resolver->awaitReturns(3);
}

TEST_F(NameLookup, AsksAgainWhenAnAddressCameLate) {
  const auto resolver = std::make_shared<SlowResolver>();
  EXPECT_EQ(host::boundedLookup("g.example", 1ms, [=] { return resolver->resolve(); }),
            std::nullopt);
  resolver->answer();
  const auto deadline = std::chrono::steady_clock::now() + 20s;
  const auto now = [] { return std::optional<std::string>("192.0.2.9"); };
  while (host::boundedLookup("g.example", 20s, now) != "192.0.2.9") {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline);
  }
}

TEST_F(NameLookup, AsksNoMoreWhileTooManyAreOut) {
  const auto resolver = std::make_shared<SlowResolver>();
  const auto resolve = [=] { return resolver->resolve(); };
  for (int i = 0; i < 3 * host::kMostLookups; ++i) {
    EXPECT_EQ(host::boundedLookup(std::to_string(i) + ".example", 1ms, resolve), std::nullopt);
  }
  EXPECT_LE(resolver->asked(), host::kMostLookups);
  resolver->answer();
  resolver->awaitReturns(host::kMostLookups);
}

}  // namespace
