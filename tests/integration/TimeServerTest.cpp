// The whole way of the time on real parts: NTP server, client process, pipe, listener, events at a
// remote subscriber, saved fallback time.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "integration/RestartableHost.h"
#include "integration/TimeServer.h"
#include "remote/RemoteClient.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

constexpr std::chrono::seconds kLimit(20);

// The machine's time: this program sets up no virtual clock.
long now() {
  return static_cast<long>(std::time(nullptr));
}

// A telephone beside a time server.
class TelephoneBesideATimeServer : public ::testing::Test, protected RestartableHost {
 protected:
  TelephoneBesideATimeServer() : RestartableHost(CLOCKHOST, {"--speed", "1", "--log-level", "5"}) {}
  void SetUp() override {
    const std::string missing = TimeServer::missing();
    if (!missing.empty())
      GTEST_SKIP() << "SKIPPED: there is no time server of another make: " << missing;
    server.emplace(serverFolder.path());
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    ::setenv("NTPCLIENT_PORT", std::to_string(server->port()).c_str(), 1);
    start({"--network", "up"});
  }

  static std::string nextEvent(host::RemoteClient& subscriber) {
    const auto event = subscriber.nextEvent(kLimit);
    return event ? event->getName() : "none";
  }
  static std::optional<Method> call(host::RemoteClient& client, const char* name) {
    Method method(name, Method::call);
    return client.call(method, kLimit);
  }
  static long timeVal(host::RemoteClient& client) {
    int seconds = 0;
    const auto reply = call(client, "getTimeVal");
    EXPECT_TRUE(reply && reply->getIntParameter("getTimeValReturn", seconds, Parameter::out));
    return seconds;
  }
  static bool isFromServer(host::RemoteClient& client) {
    bool fromServer = false;
    const auto reply = call(client, "isTimeSourceSntp");
    EXPECT_TRUE(reply &&
                reply->getBoolParameter("isTimeSourceSntpReturn", fromServer, Parameter::out));
    return fromServer;
  }

  support::TemporaryFolder serverFolder;
  std::optional<TimeServer> server;
};

TEST_F(TelephoneBesideATimeServer, TakesItsTimeAndKeepsItOverAPowerCut) {
  {
    host::RemoteClient subscriber(socket());
    EXPECT_FALSE(isFromServer(subscriber));
    ASSERT_TRUE(call(subscriber, "observeTimeEvents"));

    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
    EXPECT_EQ(nextEvent(subscriber), "timeChangeEvent");
    EXPECT_EQ(nextEvent(subscriber), "dateChangeEvent");
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::printf("from the setting to both events: %.3f s\n", taken.count());
    EXPECT_LT(taken.count(), 2.0);

    EXPECT_TRUE(isFromServer(subscriber));
    EXPECT_NEAR(static_cast<double>(timeVal(subscriber)), static_cast<double>(now()), 5.0);
    EXPECT_TRUE(waitFor({"log"}, "sntpTimeChanged: FallbackTime is"));
  }
  end(SIGKILL);
  start({"--network", "down"});  // so that the time is the saved one
  host::RemoteClient client(socket());
  EXPECT_NEAR(static_cast<double>(timeVal(client)), static_cast<double>(now()), 60.0);
}

}  // namespace
}  // namespace integration
