#include "remote/Registrations.h"

#include <gtest/gtest.h>

#include <optional>

#include "host/remote/ServerUnderTest.h"
#include "remote/ClientLimits.h"
#include "support/LogCapture.h"

namespace host {
namespace {

TEST(Registrations, OfOneClientBeyondItsLimitAreRefusedWithOneLine) {
  ServerUnderTest server;
  const support::LogCapture log(4);
  RemoteClient client(server.socket);
  for (std::size_t i = 0; i < kMostRegistrations; ++i) {
    ASSERT_TRUE(observe(client)) << i;
  }
  EXPECT_LE(kMostRegistrations, 10U) << "each event is sent once for each";
  for (int i = 0; i < 10; ++i) EXPECT_FALSE(observe(client));
  EXPECT_EQ(server.device.observers(), kMostRegistrations);
  EXPECT_EQ(log.text(),
            "clockhost 3: registration refused: client-1 observes 8 times, which is the limit\n");
  EXPECT_TRUE(unobserve(client));
  EXPECT_TRUE(observe(client));
  EXPECT_FALSE(observe(client));
  RemoteClient other(server.socket);
  EXPECT_TRUE(observe(other));
}

TEST(Registrations, BeyondTheFirstOfEachClientHaveACommonLimit) {
  ServerUnderTest server({.furtherRegistrations = 3});
  const support::LogCapture log(4);
  std::optional<RemoteClient> greedy(server.socket);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(observe(*greedy));
  RemoteClient other(server.socket);
  EXPECT_TRUE(observe(other));
  EXPECT_FALSE(observe(other));
  EXPECT_EQ(log.text(),
            "clockhost 3: registration refused: all clients together have 3 registrations beyond "
            "their first, which is the limit\n");
  EXPECT_TRUE(unobserve(*greedy));
  EXPECT_TRUE(observe(other)) << "the greedy client gave one back";
  EXPECT_FALSE(observe(other));
  greedy.reset();
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 2; }));
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(observe(other));
  EXPECT_FALSE(observe(other));
}

// Even if the service never answers the request to remove them.
TEST(Registrations, OfADisconnectedClientDoNotCount) {
  ServerUnderTest server({.clients = 1, .furtherRegistrations = 1});
  server.device.stopUnobserving();
  for (std::size_t client = 1; client <= 3; ++client) {
    std::optional<RemoteClient> observer(server.socket);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(observe(*observer)) << client;
    EXPECT_FALSE(observe(*observer));
    observer.reset();
    ASSERT_TRUE(server.becomes([&] { return server.clients() == 0; }));
    EXPECT_EQ(server.device.observers(), 2 * client);
  }
}

}  // namespace
}  // namespace host
