// The time's whole way on real parts: NTP server, client process, pipe, listener, events at a
// remote subscriber, saved time.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "integration/RestartableHost.h"
#include "integration/TimeServer.h"
#include "remote/RemoteClient.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

constexpr std::chrono::seconds kLimit(20);
constexpr std::chrono::seconds kFirstAttempt(14);  // the client waits 15 s until the next

// The machine's time: this program has no virtual clock.
double now() {
  return static_cast<double>(std::time(nullptr));
}

std::string nextEvent(host::RemoteClient& subscriber) {
  const auto event = subscriber.nextEvent(kLimit);
  return event ? event->getName() : "none";
}

double timeOf(RestartableHost& telephone) {
  const std::string reply = telephone.ctl({"call", "getTimeVal"}).out;
  return std::stod(reply.substr(reply.find('=') + 1));
}

TEST(TelephoneBesideATimeServer, TakesItsTimeAndKeepsItOverAPowerCut) {
  if (!TimeServer::isThere()) GTEST_SKIP() << "SKIPPED: no time server at " CLOCK_CHRONYD;
  const support::TemporaryFolder folder;
  const TimeServer server(folder.path());
  ::setenv("NTPCLIENT_PORT", server.port().c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
  RunningHost telephone({"--speed", "1", "--log-level", "5", "--network", "up"});
  EXPECT_EQ(telephone.ctl({"call", "isTimeSourceSntp"}).out, "isTimeSourceSntpReturn=false\n");
  host::RemoteClient subscriber(telephone.socket());
  Method observe("observeTimeEvents", Method::call);
  ASSERT_TRUE(subscriber.call(observe, kLimit));

  const auto begin = std::chrono::steady_clock::now();
  ASSERT_EQ(telephone.ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
  EXPECT_EQ(nextEvent(subscriber), "timeChangeEvent");
  EXPECT_EQ(nextEvent(subscriber), "dateChangeEvent");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kFirstAttempt);

  EXPECT_EQ(telephone.ctl({"call", "isTimeSourceSntp"}).out, "isTimeSourceSntpReturn=true\n");
  EXPECT_NEAR(timeOf(telephone), now(), 5.0);
  EXPECT_TRUE(telephone.waitFor({"log"}, "sntpTimeChanged: FallbackTime is"));
  telephone.end(SIGKILL);
  telephone.start({"--network", "down"});  // so that the time is the saved one
  EXPECT_NEAR(timeOf(telephone), now(), 60.0);
}

}  // namespace
}  // namespace integration
