#include "remote/ClientLimits.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "host/remote/HeldRequests.h"
#include "host/remote/RawSocket.h"
#include "remote/Outbox.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

// The limit of clients for a process that may have `most` descriptors.
std::size_t clientsUnder(rlim_t most) {
  const support::SoftLimit limit(RLIMIT_NOFILE, most);
  return clientsWithDescriptors();
}

TEST(ClientLimits, LeaveDescriptorsForTheHostAndAtLeastOneForAClient) {
  for (const rlim_t few : {rlim_t{0}, rlim_t{kOwnDescriptors - 1}, rlim_t{kOwnDescriptors}}) {
    EXPECT_EQ(clientsUnder(few), 1U) << few;
  }
  EXPECT_EQ(clientsUnder(kOwnDescriptors + 1), 1U);
  EXPECT_EQ(clientsUnder(kOwnDescriptors + 2), 2U);
}

// Clients rely on these values.
TEST(ClientLimits, AreAsDocumentedInTheProtocol) {
  EXPECT_EQ(kFramesAtOnce, 4U);
  EXPECT_EQ(kFramesInTurn, 64U);
  EXPECT_EQ(kTurn, std::chrono::milliseconds(1));
  EXPECT_EQ(kMostOpenRequests, 64U);
  EXPECT_EQ(kMostUnread, 256U << 10U);
  EXPECT_EQ(Outbox::kMaxQueued, 1U << 20U);
  EXPECT_EQ(kMostRegistrations, 8U);
  EXPECT_EQ(kMostFurtherRegistrations, 1'000U);
  EXPECT_EQ(kMostClients, 10'100U);
  EXPECT_EQ(kMostControlClients, 100U);
  EXPECT_EQ(kOwnDescriptors, 164U);
}

TEST(ClientLimits, RequestsBeyondTheLimitWaitInTheSocket) {
  ServerHoldingRequests at;
  RemoteClient neighbour(at.server.controlSocket);
  RawSocket client(at.server.controlSocket);
  client.send(frames(FrameKind::controlRequest, "{}", 3 * kMostOpenRequests));
  ASSERT_TRUE(at.has(kMostOpenRequests));
  const auto id = neighbour.startControl("{}");
  ASSERT_TRUE(at.has(kMostOpenRequests + 1));
  static_cast<void>(at.requests.takeLast());
  EXPECT_TRUE(neighbour.nextAnswer(id, kLong));
  static_cast<void>(at.requests.take());
  EXPECT_TRUE(at.has(kMostOpenRequests));
  for (std::size_t left = 3 * kMostOpenRequests - 1; left > 0; --left) {
    ASSERT_TRUE(at.has(std::min(left, kMostOpenRequests)));
    static_cast<void>(at.requests.take());
  }
}

TEST(ClientLimits, ARequestMayHoldBackTheNextOne) {
  ServerWithAHeldClient at;
  EXPECT_EQ(at.requests.take().text, "hold");
  ASSERT_TRUE(at.has(1));
  EXPECT_EQ(at.requests.take().text, "next");
}

TEST(ClientLimits, NextRequestsWaitWhileAnswersAreUnread) {
  int asked = 0;
  const std::string answer(300 * 1024, 'a');
  ServerUnderTest server([&](const ControlRequest& request) {
    ++asked;
    request.channel->reply(answer);
  });
  FrameSocket client(server.controlSocket);
  for (std::uint32_t id = 0; id < 100; ++id) client.send({FrameKind::controlRequest, id, "{}"});
  ASSERT_TRUE(server.becomes([&] { return asked > 0; }));
  EXPECT_LE(server.onLoop([&] { return asked; }), 3)
      << "unread answers beyond 256 KiB stop the next request";
  for (std::uint32_t id = 0; id < 100; ++id) ASSERT_EQ(received(client).id, id);
}

TEST(ClientLimits, RequestOfADisconnectedClientIsNotWanted) {
  ServerHoldingRequests at;
  std::optional<RawSocket> client(at.server.controlSocket);
  client->send(frames(FrameKind::controlRequest, "{}", 3 * kMostOpenRequests));
  ASSERT_TRUE(at.has(kMostOpenRequests));
  const ControlRequest first = at.requests.take();
  EXPECT_TRUE(first.channel->wanted());
  client.reset();
  ASSERT_TRUE(at.server.becomes([&] { return !first.channel->wanted(); }));
  EXPECT_TRUE(at.server.becomes([&] { return at.server.clients() == 0; })) << "its slot is free";
}

TEST(ClientLimits, RequestsThatADisconnectedClientLeftInItsSocketAreNotExecuted) {
  int asked = 0;
  ServerUnderTest server([&](const ControlRequest& request) {
    ++asked;
    request.channel->reply("{}");
  });
  std::optional<RawSocket> client(server.controlSocket);
  ASSERT_TRUE(server.becomes([&] { return server.clients() == 1; }));
  server.onLoop([&] {
    client->send(frames(FrameKind::controlRequest, "{}", 3000));
    client.reset();
  });
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 0; }));
  EXPECT_LE(asked, static_cast<int>(kFramesInTurn));
}

TEST(ClientLimits, ClientsBeyondTheLimitGetTheReasonAndTheLogHasOneLine) {
  ServerUnderTest server({.clients = 2});
  const support::LogCapture log(4);
  RemoteClient one(server.socket);
  RemoteClient two(server.socket);
  ASSERT_TRUE(server.becomes([&] { return server.clients() == 2; }));
  for (int i = 0; i < 10; ++i) {
    FrameSocket client(server.socket);
    EXPECT_EQ(
        received(client).payload,
        R"({"ok":false,"error":"2 clients are connected, which is the limit; try again later"})");
  }
  EXPECT_EQ(log.count("client turned away: 2 clients are connected, which is the limit"), 1U);
  EXPECT_EQ(server.clients(), 2U);
  const RemoteClient control(server.controlSocket);
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 3; }))
      << "control clients have slots of their own";
}

constexpr uid_t kRoot = 0;
constexpr uid_t kOwn = 1000;
constexpr uid_t kOther = 1001;
constexpr uid_t kThird = 1002;

class ConnectionLimitOfUser1000 : public ::testing::Test {
 protected:
  void connect(uid_t user, int count, std::size_t most) {
    for (int i = 0; i < count; ++i) m_slots.push_back(m_limit.take(user, most));
  }
  std::string refusal(uid_t user, std::size_t most) {
    return errorOf([&] { connect(user, 1, most); });
  }
  void disconnectOne() { m_slots.pop_back(); }

 private:
  ConnectionLimit m_limit{kOwn};
  std::vector<ConnectionLimit::Slot> m_slots;
};

TEST_F(ConnectionLimitOfUser1000, GivesOneUserHalfAndTheOthersTheRest) {
  connect(kOther, 5, 10);
  EXPECT_EQ(refusal(kOther, 10),
            "5 clients of uid 1001 are connected, which is the limit of one user");
  connect(kThird, 4, 10);
  connect(kOwn, 1, 10);
  EXPECT_EQ(refusal(kThird, 10), "10 clients are connected, which is the limit");
}

TEST_F(ConnectionLimitOfUser1000, GivesAllToRootAndTheHostsUser) {
  connect(kRoot, 10, 10);
  EXPECT_EQ(refusal(kOwn, 10), "10 clients are connected, which is the limit");
  connect(kOwn, 20, 30);
}

TEST_F(ConnectionLimitOfUser1000, FreesTheSlotOfADisconnectedClient) {
  connect(kOther, 5, 10);
  disconnectOne();
  connect(kOther, 1, 10);
  EXPECT_NE(refusal(kOther, 10), "");
}

TEST_F(ConnectionLimitOfUser1000, GivesAnyUserTheOnlySlot) {
  connect(kOther, 1, 1);
  EXPECT_EQ(refusal(kOther, 1), "1 clients are connected, which is the limit");
  EXPECT_EQ(refusal(kOther, 3),
            "1 clients of uid 1001 are connected, which is the limit of one user");
}

// The first three clients belong to another user, later clients to the host's user.
int g_connections = 0;
uid_t otherThenOwn(int) {
  return ++g_connections <= 3 ? kUnknownUser : ::geteuid();
}

TEST(ClientLimits, RefusesAUserBeyondItsShareAndServesTheHostsUser) {
  g_connections = 0;
  ServerUnderTest server({.clients = 4, .user = otherThenOwn});
  const support::LogCapture log(4);
  const RemoteClient one(server.socket);
  const RemoteClient two(server.socket);
  ASSERT_TRUE(server.becomes([&] { return server.clients() == 2; }));
  const std::string why = "2 clients of uid " + std::to_string(kUnknownUser) +
                          " are connected, which is the limit of one user";
  FrameSocket refused(server.socket);
  EXPECT_EQ(received(refused).payload, R"({"ok":false,"error":")" + why + R"(; try again later"})");
  EXPECT_TRUE(log.waitForPart("client turned away: " + why)) << log.text();
  const RemoteClient own(server.socket);
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 3; }));
}

}  // namespace
}  // namespace host
