// What one client may have of the host at once.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <optional>
#include <vector>

#include "host/remote/RawSocket.h"
#include "host/remote/ServerUnderTest.h"
#include "remote/ClientBounds.h"
#include "remote/RemoteClient.h"
#include "support/LogCapture.h"

namespace host {
namespace {

// Requests that wait until the test lets them go.
class HeldRequests {
 public:
  [[nodiscard]] ControlHandler handler() {
    return [this](ControlRequest request) { m_requests.push_back(std::move(request)); };
  }
  std::vector<ControlRequest> m_requests;  // the loop's alone
};

// How many clients the process has descriptors for, when it may have `most`.
std::size_t clientsUnder(rlim_t most) {
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit limit{most, before.rlim_max};
  EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  const std::size_t clients = clientsWithDescriptors();
  ::setrlimit(RLIMIT_NOFILE, &before);
  return clients;
}

TEST(ClientsWithDescriptors, AreWhatTheHostDoesNotNeedItselfAndAlwaysOne) {
  for (const rlim_t few : {rlim_t{0}, rlim_t{kOwnDescriptors - 1}, rlim_t{kOwnDescriptors}}) {
    EXPECT_EQ(clientsUnder(few), 1U) << few;
  }
  EXPECT_EQ(clientsUnder(kOwnDescriptors + 1), 1U);
  EXPECT_EQ(clientsUnder(kOwnDescriptors + 2), 2U);
}

TEST(ClientBounds, RequestsBeyondTheMostThatAreOpenWaitInTheirSocket) {
  HeldRequests held;
  ServerUnderTest server(held.handler());
  RemoteClient neighbour(server.controlSocket);
  RawSocket client(server.controlSocket);
  client.send(frames(FrameKind::controlRequest, "{}", 3 * kMostOpenRequests));
  ASSERT_TRUE(server.becomes([&] { return held.m_requests.size() == kMostOpenRequests; }));
  const auto id = neighbour.startControl("{}");
  ASSERT_TRUE(server.becomes([&] { return held.m_requests.size() == kMostOpenRequests + 1; }));
  server.onLoop([&] { held.m_requests.pop_back(); });
  EXPECT_TRUE(neighbour.nextAnswer(id, kLong));
  server.onLoop([&] { held.m_requests.erase(held.m_requests.begin()); });
  EXPECT_TRUE(server.becomes([&] { return held.m_requests.size() == kMostOpenRequests; }));
  std::size_t answered = 1;
  EXPECT_TRUE(server.becomes([&] {
    answered += held.m_requests.size();
    held.m_requests.clear();
    return answered == 3 * kMostOpenRequests;
  }));
}

TEST(ClientBounds, ARequestThatHoldsWhatComesNextIsAnsweredFirst) {
  HeldRequests held;
  ServerUnderTest server([&](ControlRequest request) {
    if (request.text == "hold") request.channel->holdNext();
    held.m_requests.push_back(std::move(request));
  });
  RawSocket client(server.controlSocket);
  client.send(frames(FrameKind::controlRequest, "hold", 1) +
              frames(FrameKind::controlRequest, "next", 1));
  ASSERT_TRUE(server.becomes([&] { return held.m_requests.size() == 1; }));
  server.onLoop([&] { held.m_requests.clear(); });
  EXPECT_TRUE(server.becomes([&] { return held.m_requests.size() == 1; }));
  EXPECT_EQ(held.m_requests.front().text, "next");
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
  HeldRequests held;
  ServerUnderTest server(held.handler());
  {
    RawSocket client(server.controlSocket);
    client.send(frames(FrameKind::controlRequest, "{}", 3 * kMostOpenRequests));
    ASSERT_TRUE(server.becomes([&] { return held.m_requests.size() == kMostOpenRequests; }));
    EXPECT_TRUE(held.m_requests.front().channel->wanted());
  }
  ASSERT_TRUE(server.becomes([&] { return !held.m_requests.front().channel->wanted(); }));
  EXPECT_TRUE(server.becomes([&] {
    held.m_requests.clear();
    return server.clients() == 0;
  }));
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
  HeldRequests held;
  ServerUnderTest server(held.handler());
  FrameSocket client(server.controlSocket);
  client.send({FrameKind::controlRequest, 1, "{}"});
  client.finishSending();
  ASSERT_TRUE(server.becomes([&] { return held.m_requests.size() == 1; }));
  EXPECT_TRUE(held.m_requests.front().channel->wanted()) << "the client still reads";
  EXPECT_TRUE(held.m_requests.front().channel->reply("{}"));
  EXPECT_FALSE(held.m_requests.front().channel->wanted());
}

TEST(ClientBounds, WhatIsNotAnsweredAtTheEndIsRefused) {
  HeldRequests held;
  ServerUnderTest server(held.handler());
  RemoteClient client(server.controlSocket);
  const auto id = client.startControl("{}");
  ASSERT_TRUE(server.becomes([&] { return held.m_requests.size() == 1; }));
  server.stop();
  const auto answer = client.nextAnswer(id, kLong);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->json, R"({"ok":false,"error":"the host is shutting down"})");
  EXPECT_FALSE(held.m_requests.front().channel->wanted());
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
