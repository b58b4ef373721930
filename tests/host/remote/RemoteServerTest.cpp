// Calls, events and control as a well-behaved client sees them.
#include "remote/RemoteServer.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "host/remote/ServerUnderTest.h"
#include "support/LogCapture.h"

namespace host {
namespace {

TEST(RemoteServer, AnswersCallsInEachCodec) {
  ServerUnderTest server;
  for (const std::string& codec : CodecTable::names()) {
    RemoteClient client(server.socket, codec);
    for (const int number : {5, -6}) EXPECT_TRUE(echoes(client, number)) << codec;
  }
}

TEST(RemoteServer, SendsRepliesOfNearlyAFullFrame) {
  ServerUnderTest server;
  RemoteClient client(server.socket);
  Method method("repeat", Method::call);
  const int bytes = 1024 * 1024 - 64;
  method.addIntParameter("bytes", bytes, Parameter::in);
  const auto reply = client.call(method, kLong);
  ASSERT_TRUE(reply);
  std::string text;
  EXPECT_TRUE(reply->getStringParameter("text", text, Parameter::out));
  EXPECT_EQ(text.size(), static_cast<std::size_t>(bytes));
}

TEST(RemoteServer, AnswersManyClientsAtOnceAndEachInOrder) {
  ServerUnderTest server;
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      RemoteClient client(server.socket, i % 2 == 0 ? "msgpack" : "json");
      for (int n = 0; n < 200; ++n) {
        if (!echoes(client, i * 1000 + n)) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(RemoteServer, ExecutesAllOneWayCallsBeforeABarrierEnds) {
  ServerUnderTest server;
  RemoteClient client(server.socket);
  Method oneWay("oneWay", Method::call);
  for (int i = 0; i < 5000; ++i) client.post(oneWay);
  ASSERT_TRUE(client.barrier(kLong));
  EXPECT_EQ(server.device.oneWayCalls(), 5000);
}

TEST(RemoteServer, ExecutesTheCallsOfAClientThatDisconnectedAtOnce) {
  ServerUnderTest server;
  {
    RemoteClient client(server.socket);
    Method oneWay("oneWay", Method::call);
    Method answered = echoOf(1);
    for (int i = 0; i < 1000; ++i) {
      client.post(answered);
      client.post(oneWay);
    }
  }
  EXPECT_TRUE(server.becomes([&] { return server.device.oneWayCalls() == 1000; }));
}

TEST(RemoteServer, SendsTheLastRepliesToAClientThatShutDownItsSendingSide) {
  ServerUnderTest server;
  FrameSocket client(server.socket);
  client.send({FrameKind::hello, 0, "json"});
  client.send(
      {FrameKind::call, 9, R"({"name":"repeat","parameters":[{"name":"bytes","value":900000}]})"});
  client.finishSending();
  const Frame reply = received(client);
  EXPECT_EQ(reply.id, 9U);
  EXPECT_GT(reply.payload.size(), 900000U);
}

TEST(RemoteServer, SendsEventsToTheirObserversInOrder) {
  ServerUnderTest server;
  RemoteClient one(server.socket);
  RemoteClient other(server.socket, "json");
  EXPECT_TRUE(observe(one) && observe(other));
  for (int i = 0; i < 100; ++i) {
    Method event("event", Method::call);
    event.addIntParameter("number", i, Parameter::in);
    EXPECT_EQ(server.device.notify(event), 2);
  }
  for (RemoteClient* const client : {&one, &other}) {
    EXPECT_TRUE(echoes(*client));
    for (int i = 0; i < 100; ++i) {
      const auto event = client->nextEvent(kLong);
      ASSERT_TRUE(event);
      EXPECT_EQ(support::textOf(*event), "call event\nin int number=" + std::to_string(i) + '\n');
    }
  }
}

TEST(RemoteServer, UnobservesADisconnectedPeerAndFreesItsProxy) {
  ServerUnderTest server;
  RemoteClient staying(server.socket);
  EXPECT_TRUE(observe(staying));
  {
    RemoteClient leaving(server.socket);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(observe(leaving));
    EXPECT_EQ(server.device.observers(), 4U);
  }
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 1; }));
  EXPECT_TRUE(server.becomes([] { return FakeProxy::living == 1; }));
  Method event("event", Method::call);
  EXPECT_EQ(server.device.notify(event), 1);
  EXPECT_TRUE(staying.nextEvent(kLong));
}

// Half of them observe. A peer that is kept takes some hundred bytes. Under a sanitizer the C
// library's count stays constant.
TEST(RemoteServer, KeepsNothingOfADisconnectedPeer) {
  ServerUnderTest server;
  const auto allocatedAfter = [&](int peers) {
    for (int i = 0; i < peers; ++i) {
      RemoteClient client(server.socket);
      EXPECT_TRUE(i % 2 == 0 ? observe(client) : echoes(client));
    }
    EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 0; }));
    EXPECT_TRUE(server.becomes([&] { return server.clients() == 0; }));
    return server.onLoop([] { return ::mallinfo2().uordblks; });
  };
  constexpr int kPeers = 500;
  const std::size_t before = allocatedAfter(kPeers);
  const std::size_t after = allocatedAfter(kPeers);
  EXPECT_LT(after, before + kPeers * 16);
}

TEST(RemoteServer, PeersConnectAndDisconnectWhileAnotherThreadSendsEvents) {
  ServerUnderTest server;
  std::atomic<bool> ended = false;
  std::atomic<int> due = 0;  // few enough that a slow reader is not dropped
  std::thread notifier([&] {
    Method event("event", Method::call);
    while (!ended) {
      if (due > 0 && server.device.notify(event) > 0) --due;
    }
  });
  for (int i = 0; i < 100; ++i) {
    due = 1000;
    RemoteClient client(server.socket);
    EXPECT_TRUE(observe(client));
    due = 1000;  // the earlier ones may all have gone to clients that are still registered
    EXPECT_TRUE(client.nextEvent(kLong));
  }
  ended = true;
  notifier.join();
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 0; }));
  EXPECT_TRUE(server.becomes([] { return FakeProxy::living == 0; }));
}

TEST(RemoteServer, StopDisconnectsAndRemovesTheSocket) {
  ServerUnderTest server;
  RemoteClient client(server.socket);
  EXPECT_TRUE(echoes(client));
  server.stop();
  EXPECT_FALSE(std::filesystem::exists(server.socket));
  EXPECT_THROW(static_cast<void>(client.nextEvent(kLong)), HostGone);
  EXPECT_THROW(RemoteClient(server.socket), NoHost);
  server.stop();
}

// The service ends next: a request for each observer would only delay the end.
TEST(RemoteServer, StopUnobservesNoPeerAndSendsNoFurtherEvent) {
  {
    ServerUnderTest server;
    std::optional<RemoteClient> gone(server.socket);
    RemoteClient client(server.socket);
    for (RemoteClient* const observer : {&client, &*gone}) EXPECT_TRUE(observe(*observer));
    server.onLoop([&] { server.stop(); });
    gone.reset();
    EXPECT_EQ(server.onLoop([&] { return server.device.unobserveCalls(); }), 0);
    Method event("event", Method::call);
    EXPECT_EQ(server.device.notify(event), 0);
    EXPECT_EQ(FakeProxy::living, 2) << "the service may still use them";
  }
  EXPECT_EQ(FakeProxy::living, 0);
}

// The service may still use the proxy of a client that it did not unobserve.
TEST(RemoteServer, KeepsTheProxyOfAPeerThatCannotBeUnobservedAndTriesAgainWithTheNextClient) {
  const support::LogCapture log;
  Method event("event", Method::call);
  {
    ServerUnderTest server;
    server.device.stopUnobserving();
    const auto observeAndDisconnect = [&] {
      RemoteClient client(server.socket);
      EXPECT_TRUE(observe(client));
    };
    observeAndDisconnect();
    EXPECT_TRUE(log.waitForPart("cannot be unobserved: client-1")) << log.text();
    EXPECT_TRUE(server.becomes([&] { return server.clients() == 0; }));
    EXPECT_EQ(FakeProxy::living, 1);
    EXPECT_EQ(server.device.notify(event), 0);
    server.device.unobserveAgain();
    {
      const RemoteClient next(server.socket);
      EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 0; }));
      EXPECT_TRUE(server.becomes([] { return FakeProxy::living == 0; }));
    }
    server.device.stopUnobserving();
    observeAndDisconnect();
    EXPECT_TRUE(server.becomes([&] { return server.clients() == 0; }));
    EXPECT_EQ(FakeProxy::living, 1);
  }
  EXPECT_EQ(FakeProxy::living, 0);
}

}  // namespace
}  // namespace host
