// Lookups with a replaced getaddrinfo: it knows one name and does not answer for others.
#include <gtest/gtest.h>
#include <netdb.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <string_view>

#include "NetHelper.h"
#include "framework/FailedLookups.h"
#include "support/Becomes.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// The state of the lookups that do not get an answer.
std::atomic<int> g_asked{0};
std::latch g_answer{1};
std::atomic<bool> g_ended{false};

// Destroyed when the thread of a lookup ends.
struct ThreadEnd {
  ThreadEnd() = default;
  ~ThreadEnd() { g_ended = true; }
  ThreadEnd(const ThreadEnd&) = delete;
  ThreadEnd& operator=(const ThreadEnd&) = delete;
};

// Behaves like a resolver that gets no answer from its servers.
int failLate() {
  thread_local const ThreadEnd end;
  ++g_asked;
  g_answer.wait();
  return EAI_AGAIN;
}

}  // namespace

// The linker replaces getaddrinfo() by __wrap_getaddrinfo; __real_getaddrinfo is the original.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real_getaddrinfo(const char* name, const char* service, const addrinfo* wanted,
                       addrinfo** found);

int __wrap_getaddrinfo(const char* name, const char* service, const addrinfo* wanted,
                       addrinfo** found) {
  if (name != std::string_view("telephone.example")) return failLate();
  return __real_getaddrinfo("192.0.2.7", service, wanted, found);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

TEST(Resolver, ResolvesNames) {
  host::failedLookups().forgetAll();
  char buffer[46] = "untouched";
  EXPECT_TRUE(NetHelper::dnsLookup("telephone.example", buffer, sizeof buffer, AF_INET));
  EXPECT_STREQ(buffer, "192.0.2.7");
}

TEST(Resolver, HasASecondToAnswerAndIsNotAskedAgainSoon) {
  host::failedLookups().forgetAll();
  char buffer[46] = "untouched";
  const auto begin = Clock::now();
  EXPECT_FALSE(NetHelper::dnsLookup("time.example.org", buffer, sizeof buffer, 0));
  const auto waited = Clock::now() - begin;
  EXPECT_GE(waited, 1s);
  EXPECT_LT(waited, 10s);  // the machine may be busy
  EXPECT_STREQ(buffer, "untouched");
  for (int i = 0; i < 100; ++i) {
    EXPECT_FALSE(NetHelper::dnsLookup("time.example.org", buffer, sizeof buffer, 0));
  }
  EXPECT_EQ(g_asked, 1);
  g_answer.count_down();
  EXPECT_TRUE(support::becomesTrue([] { return g_ended.load(); }));
  EXPECT_TRUE(host::failedLookups().isSilent(Clock::now())) << "no server has answered";
}

}  // namespace
