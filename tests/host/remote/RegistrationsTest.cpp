#include "remote/Registrations.h"

#include <gtest/gtest.h>

#include <optional>

#include "host/remote/MethodText.h"
#include "host/remote/ServerUnderTest.h"
#include "remote/ClientLimits.h"
#include "remote/RemoteClient.h"
#include "support/LogCapture.h"

namespace host {
namespace {

std::string ask(RemoteClient& client, const char* name) {
  Method method(name, Method::call);
  const auto reply = client.call(method, kLong);
  return reply ? textOf(*reply) : "no reply";
}

constexpr const char* kObserved = "observeTimeEvents/1 observeTimeEventsReturn/1=true";
constexpr const char* kNotObserved = "observeTimeEvents/1 observeTimeEventsReturn/1=false";

TEST(Registrations, OfOneClientBeyondItsLimitAreRefusedWithOneLine) {
  ServerUnderTest server;
  const support::LogCapture log(4);
  RemoteClient client(server.socket);
  for (std::size_t i = 0; i < kMostRegistrations; ++i) {
    ASSERT_EQ(ask(client, "observeTimeEvents"), kObserved) << i;
  }
  EXPECT_LE(kMostRegistrations, 10U) << "each event is sent once for each";
  for (int i = 0; i < 10; ++i) EXPECT_EQ(ask(client, "observeTimeEvents"), kNotObserved);
  EXPECT_EQ(server.device.observers(), kMostRegistrations);
  EXPECT_EQ(log.text(),
            "clockhost 3: registration refused: client-1 observes 8 times, which is the limit\n");
  ask(client, "unobserveTimeEvents");
  EXPECT_EQ(ask(client, "observeTimeEvents"), kObserved);
  EXPECT_EQ(ask(client, "observeTimeEvents"), kNotObserved);
  RemoteClient other(server.socket);
  EXPECT_EQ(ask(other, "observeTimeEvents"), kObserved);
}

TEST(Registrations, BeyondTheFirstOfEachClientHaveACommonLimit) {
  RemoteServer::Limits limits;
  limits.furtherRegistrations = 3;
  ServerUnderTest server({}, limits);
  const support::LogCapture log(4);
  std::optional<RemoteClient> greedy(server.socket);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(ask(*greedy, "observeTimeEvents"), kObserved);
  RemoteClient other(server.socket);
  EXPECT_EQ(ask(other, "observeTimeEvents"), kObserved);
  EXPECT_EQ(ask(other, "observeTimeEvents"), kNotObserved);
  EXPECT_EQ(log.text(),
            "clockhost 3: registration refused: all clients together have 3 registrations beyond "
            "their first, which is the limit\n");
  ask(*greedy, "unobserveTimeEvents");
  EXPECT_EQ(ask(other, "observeTimeEvents"), kObserved) << "the greedy client gave one back";
  EXPECT_EQ(ask(other, "observeTimeEvents"), kNotObserved);
  greedy.reset();
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 2; }));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ask(other, "observeTimeEvents"), kObserved);
  EXPECT_EQ(ask(other, "observeTimeEvents"), kNotObserved);
}

// Even if the service never answers the request to remove them.
TEST(Registrations, OfADisconnectedClientDoNotCount) {
  RemoteServer::Limits limits;
  limits.clients = 1;
  limits.furtherRegistrations = 1;
  ServerUnderTest server({}, limits);
  server.device.stopUnobserving();
  for (std::size_t client = 1; client <= 3; ++client) {
    std::optional<RemoteClient> observer(server.socket);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(ask(*observer, "observeTimeEvents"), kObserved) << client;
    EXPECT_EQ(ask(*observer, "observeTimeEvents"), kNotObserved);
    observer.reset();
    ASSERT_TRUE(server.becomes([&] { return server.clients() == 0; }));
    EXPECT_EQ(server.device.observers(), 2 * client);
  }
}

}  // namespace
}  // namespace host
