// What one client may have of the host at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "host/remote/Desk.h"
#include "host/remote/RawSocket.h"
#include "remote/ClientBounds.h"
#include "remote/Outbox.h"
#include "remote/RemoteClient.h"
#include "support/LogCapture.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

// How many clients the process has descriptors for, when it may have `most`.
std::size_t clientsUnder(rlim_t most) {
  const support::SoftLimit limit(RLIMIT_NOFILE, most);
  return clientsWithDescriptors();
}

TEST(ClientsWithDescriptors, AreWhatTheHostDoesNotNeedItselfAndAlwaysOne) {
  for (const rlim_t few : {rlim_t{0}, rlim_t{kOwnDescriptors - 1}, rlim_t{kOwnDescriptors}}) {
    EXPECT_EQ(clientsUnder(few), 1U) << few;
  }
  EXPECT_EQ(clientsUnder(kOwnDescriptors + 1), 1U);
  EXPECT_EQ(clientsUnder(kOwnDescriptors + 2), 2U);
}

// A client may count on them.
TEST(ClientBounds, AreThoseThatTheProtocolTells) {
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

TEST(ClientBounds, RequestsBeyondTheMostThatAreOpenWaitInTheirSocket) {
  ServerWithDesk at;
  RemoteClient neighbour(at.server.controlSocket);
  RawSocket client(at.server.controlSocket);
  client.send(frames(FrameKind::controlRequest, "{}", 3 * kMostOpenRequests));
  ASSERT_TRUE(at.has(kMostOpenRequests));
  const auto id = neighbour.startControl("{}");
  ASSERT_TRUE(at.has(kMostOpenRequests + 1));
  static_cast<void>(at.desk.takeLast());
  EXPECT_TRUE(neighbour.nextAnswer(id, kLong));
  static_cast<void>(at.desk.take());
  EXPECT_TRUE(at.has(kMostOpenRequests));
  for (std::size_t left = 3 * kMostOpenRequests - 1; left > 0; --left) {
    ASSERT_TRUE(at.has(std::min(left, kMostOpenRequests)));
    static_cast<void>(at.desk.take());
  }
}

TEST(ClientBounds, ARequestThatHoldsWhatComesNextIsAnsweredFirst) {
  ServerWithAHeldClient at;
  EXPECT_EQ(at.desk.take().text, "hold");
  ASSERT_TRUE(at.has(1));
  EXPECT_EQ(at.desk.take().text, "next");
}

TEST(ClientBounds, AnswersThatAreNotReadHoldTheNextRequests) {
  int asked = 0;
  const std::string answer(300 * 1024, 'a');
  ServerUnderTest server([&](const ControlRequest& request) {
    ++asked;
    request.channel->reply(answer);
  });
  FrameSocket client(server.controlSocket);
  for (std::uint32_t id = 0; id < 100; ++id) client.send({FrameKind::controlRequest, id, "{}"});
  ASSERT_TRUE(server.becomes([&] { return asked > 0; }));
  EXPECT_LE(server.onLoop([&] { return asked; }), 3) << "more than fit into 1 MiB, at once";
  Frame frame;
  for (std::uint32_t id = 0; id < 100; ++id) {
    ASSERT_TRUE(client.receive(frame, std::chrono::steady_clock::now() + kLong));
    EXPECT_EQ(frame.id, id);
  }
}

TEST(ClientBounds, WhatAClientThatIsGoneHasAskedForIsNotWantedAnyMore) {
  ServerWithDesk at;
  std::optional<RawSocket> client(at.server.controlSocket);
  client->send(frames(FrameKind::controlRequest, "{}", 3 * kMostOpenRequests));
  ASSERT_TRUE(at.has(kMostOpenRequests));
  const ControlRequest first = at.desk.take();
  EXPECT_TRUE(first.channel->wanted());
  client.reset();
  ASSERT_TRUE(at.server.becomes([&] { return !first.channel->wanted(); }));
  EXPECT_TRUE(at.server.becomes([&] { return at.server.clients() == 0; })) << "there is room again";
}

TEST(ClientBounds, WhatAClientThatIsGoneHasStillInItsSocketIsNotBegun) {
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

TEST(ClientBounds, AnAnswerIsWantedOnce) {
  ServerWithDesk at;
  FrameSocket client(at.server.controlSocket);
  client.send({FrameKind::controlRequest, 1, "{}"});
  client.finishSending();
  ASSERT_TRUE(at.has(1));
  const ControlRequest request = at.desk.take();
  EXPECT_TRUE(request.channel->wanted()) << "the client still reads";
  EXPECT_TRUE(request.channel->reply("{}"));
  EXPECT_FALSE(request.channel->wanted());
}

TEST(ClientBounds, WhatIsNotAnsweredAtTheEndIsRefused) {
  ServerWithDesk at;
  RemoteClient client(at.server.controlSocket);
  const auto id = client.startControl("{}");
  ASSERT_TRUE(at.has(1));
  at.server.stop();
  const auto answer = client.nextAnswer(id, kLong);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->json, R"({"ok":false,"error":"the host is shutting down"})");
  EXPECT_FALSE(at.desk.take().channel->wanted());
}

TEST(ClientBounds, ClientsBeyondTheMostAreToldAndTheLogHasOneLine) {
  RemoteServer::Limits limits;
  limits.clients = 2;
  ServerUnderTest server({}, limits);
  const support::LogCapture log(4);
  RemoteClient one(server.socket);
  RemoteClient two(server.socket);
  ASSERT_TRUE(server.becomes([&] { return server.clients() == 2; }));
  for (int i = 0; i < 10; ++i) {
    FrameSocket client(server.socket);
    Frame frame;
    ASSERT_TRUE(client.receive(frame, std::chrono::steady_clock::now() + kLong));
    EXPECT_EQ(
        frame.payload,
        R"({"ok":false,"error":"2 clients are connected, which is the most; try again later"})");
  }
  EXPECT_EQ(log.count("client turned away: 2 clients are connected, which is the most"), 1U);
  EXPECT_EQ(server.clients(), 2U);
  const RemoteClient control(server.controlSocket);
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 3; })) << "who controls has own room";
}

}  // namespace
}  // namespace host
