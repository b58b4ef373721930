// Control requests at the server's control socket.
#include <gtest/gtest.h>
#include <unistd.h>

#include <semaphore>
#include <thread>

#include "base/Origin.h"
#include "host/remote/HeldRequests.h"
#include "host/remote/RawSocket.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace host {
namespace {

ControlHandler echo() {
  return [](const ControlRequest& request) { request.channel->reply(request.text + "!"); };
}

TEST(Control, RequestGetsItsReply) {
  ServerUnderTest server(echo());
  RemoteClient client(server.controlSocket);
  EXPECT_EQ(client.control("{\"verb\":\"status\"}", kLong), "{\"verb\":\"status\"}!");
  EXPECT_EQ(client.control("", kLong), "!");
}

TEST(Control, RequestAndReplyAreAsLongAsAFrameHolds) {
  ServerUnderTest server(
      [](const ControlRequest& request) { request.channel->reply(request.text); });
  RemoteClient client(server.controlSocket);
  EXPECT_EQ(client.control(std::string(kMaxPayload, 'x'), kLong)->size(), kMaxPayload);
  EXPECT_THROW(static_cast<void>(client.startControl(std::string(kMaxPayload + 1, 'x'))), Error);
}

TEST(Control, RequestNamesTheProcessThatSentIt) {
  ServerUnderTest server([](const ControlRequest& request) {
    request.channel->reply(request.channel->origin() + "; " + std::string(originHere()));
  });
  const std::string self =
      "uid " + std::to_string(::getuid()) + ", pid " + std::to_string(::getpid());
  EXPECT_EQ(RemoteClient(server.controlSocket).control("?", kLong), self + "; " + self);
  EXPECT_EQ(server.onLoop([] { return std::string(originHere()); }), "") << "the request is over";
}

TEST(Control, AnswersMayComeLaterFromAnyThreadAndInAnyOrder) {
  ServerHoldingRequests at;
  RemoteClient client(at.server.controlSocket);
  const auto first = client.startControl("first");
  const auto second = client.startControl("second");
  ASSERT_TRUE(at.has(2));
  ControlRequest one = at.requests.take();
  ControlRequest two = at.requests.take();
  std::thread([&] {
    EXPECT_TRUE(two.channel->reply("second done"));
    EXPECT_TRUE(one.channel->item("1 of 2"));
    EXPECT_TRUE(one.channel->item("2 of 2"));
    EXPECT_TRUE(one.channel->reply("first done"));
  }).join();
  for (const char* const item : {"1 of 2", "2 of 2"}) {
    const auto answer = client.nextAnswer(first, kLong);
    ASSERT_TRUE(answer);
    EXPECT_FALSE(answer->last);
    EXPECT_EQ(answer->json, item);
  }
  const auto end = client.nextAnswer(first, kLong);
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->last);
  EXPECT_EQ(end->json, "first done");
  EXPECT_EQ(client.nextAnswer(second, kLong)->json, "second done");
  EXPECT_FALSE(client.nextAnswer(second, kLong)) << "after its last";
}

TEST(Control, RequestHasOneReplyAndNoItemAfterIt) {
  ServerHoldingRequests at;
  RemoteClient client(at.server.controlSocket);
  const auto id = client.startControl("?");
  ASSERT_TRUE(at.has(1));
  const ControlRequest request = at.requests.take();
  EXPECT_FALSE(request.channel->reply(std::string(kMaxPayload + 1, 'x')));
  EXPECT_TRUE(request.channel->wanted());
  EXPECT_TRUE(request.channel->reply("once"));
  EXPECT_FALSE(request.channel->wanted());
  EXPECT_FALSE(request.channel->reply("twice"));
  EXPECT_FALSE(request.channel->item("late"));
  EXPECT_EQ(client.nextAnswer(id, kLong)->json, "once");
}

TEST(Control, ReplyReachesAClientThatHasShutDownItsSendingSide) {
  ServerHoldingRequests at;
  FrameSocket client(at.server.controlSocket);
  client.send({FrameKind::controlRequest, 3, "?"});
  client.finishSending();
  ASSERT_TRUE(at.has(1));
  ControlRequest request = at.requests.take();
  EXPECT_TRUE(request.channel->wanted());
  std::thread([&] { EXPECT_TRUE(request.channel->reply("late")); }).join();
  request = {};
  EXPECT_EQ(received(client).payload, "late");
  EXPECT_THROW(received(client), HostGone);
}

TEST(Control, LostRequestIsRefusedAndNoLongerKeepsTheConnectionOpen) {
  ServerHoldingRequests at;
  RemoteClient client(at.server.controlSocket);
  const auto id = client.startControl("?");
  ASSERT_TRUE(at.has(1));
  static_cast<void>(at.requests.take());
  EXPECT_TRUE(client.barrier(kLong));
  const auto answer = client.nextAnswer(id, kLong);
  ASSERT_TRUE(answer);
  EXPECT_TRUE(answer->last);
  EXPECT_EQ(answer->json, R"({"ok":false,"error":"the host could not answer"})");
}

TEST(Control, NextRequestIsHandledWhenTheHoldingRequestIsLost) {
  ServerWithAHeldClient at;
  ControlRequest held = at.requests.take();
  {
    const support::NoMemory none;
    held.channel.reset();
  }
  EXPECT_TRUE(at.has(1));
}

TEST(Control, RequestOfAClientThatHungUpIsNotCarriedOut) {
  std::binary_semaphore begun{0};
  std::binary_semaphore mayEnd{0};
  std::vector<std::string> texts;
  ServerUnderTest server([&](const ControlRequest& request) {
    texts.push_back(request.text);
    if (request.text == "long") {
      begun.release();
      mayEnd.acquire();
    }
    request.channel->reply("{}");
  });
  RemoteClient busy(server.controlSocket);
  static_cast<void>(busy.startControl("long"));
  begun.acquire();
  FrameSocket(server.controlSocket).send({FrameKind::controlRequest, 1, "gone"});
  RemoteClient last(server.controlSocket);
  mayEnd.release();
  EXPECT_EQ(last.control("last", kLong), "{}");
  EXPECT_EQ(texts, (std::vector<std::string>{"long", "last"}));
}

TEST(Control, NotifiesOnTheLoopWhenTheClientDisconnects) {
  ServerHoldingRequests at;
  auto client = std::make_unique<RemoteClient>(at.server.controlSocket);
  static_cast<void>(client->startControl("follow"));
  ASSERT_TRUE(at.has(1));
  ControlRequest request = at.requests.take();
  int notified = 0;
  at.server.onLoop([&] { request.channel->onGone([&notified] { ++notified; }); });
  EXPECT_TRUE(request.channel->item("still there"));
  EXPECT_EQ(at.server.onLoop([&] { return notified; }), 0);
  client.reset();
  EXPECT_TRUE(at.server.becomes([&] { return notified == 1; }));
  EXPECT_FALSE(request.channel->item("too late"));
  EXPECT_FALSE(request.channel->reply("too late"));
  at.server.onLoop([&] { request.channel->onGone([&notified] { ++notified; }); });
  EXPECT_EQ(at.server.onLoop([&] { return notified; }), 2)
      << "at once: it has already disconnected";
}

TEST(Control, OpenRequestIsRefusedWhenTheServerStops) {
  ControlRequest request;
  {
    ServerHoldingRequests at;
    RemoteClient client(at.server.controlSocket);
    const auto id = client.startControl("?");
    ASSERT_TRUE(at.has(1));
    at.server.stop();
    const auto answer = client.nextAnswer(id, kLong);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->json, R"({"ok":false,"error":"the host is shutting down"})");
    request = at.requests.take();
    EXPECT_FALSE(request.channel->wanted());
  }
  EXPECT_FALSE(request.channel->item("late"));
  EXPECT_FALSE(request.channel->reply("late"));
}

TEST(Control, ClientThatDoesNotReadItemsIsDroppedWithOneLine) {
  ServerHoldingRequests at;
  const support::LogCapture log(4);
  RemoteClient client(at.server.controlSocket);
  static_cast<void>(client.startControl("follow"));
  ASSERT_TRUE(at.has(1));
  const ControlRequest request = at.requests.take();
  int items = 0;
  while (request.channel->item(std::string(1000, 'i')) && items < 100000) ++items;
  EXPECT_LT(items, 10000);
  EXPECT_TRUE(at.server.becomes([&] { return at.server.clients() == 0; }));
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
}

TEST(Control, RequestAtTheCallSocketIsRefusedInOneLine) {
  ServerHoldingRequests at;
  const support::LogCapture log(4);
  RemoteClient client(at.server.socket);
  EXPECT_EQ(client.control(R"({"verb":"status"})", kLong),
            R"({"error":"control requests are not taken here; send them to )" +
                at.server.controlSocket.string() + R"(","ok":false})");
  EXPECT_TRUE(echoes(client)) << "it is still served";
  EXPECT_EQ(at.requests.size(), 0U);
  EXPECT_TRUE(log.entries().empty()) << log.text();
}

TEST(Control, CallAtTheControlSocketIsRefusedInOneLine) {
  ServerUnderTest server(echo());
  const std::string refusal = "calls are not taken here; send them to " + server.socket.string();
  Method method("observeTimeEvents", Method::call);
  RemoteClient caller(server.controlSocket);
  EXPECT_EQ(errorOf([&] { static_cast<void>(caller.call(method, kLong)); }), refusal);
  EXPECT_EQ(caller.control("?", kLong), "?!") << "it is still served";
  RemoteClient oneWay(server.controlSocket);
  oneWay.post(method);
  EXPECT_EQ(errorOf([&] { static_cast<void>(oneWay.barrier(kLong)); }), refusal);
  EXPECT_EQ(server.device.observers(), 0U);
}

TEST(Control, ClientIsDroppedWhenItsHandlerThrows) {
  ServerUnderTest server([](const ControlRequest&) { throw std::runtime_error("on purpose"); });
  const support::LogCapture log(4);
  RemoteClient client(server.controlSocket);
  EXPECT_THROW(static_cast<void>(client.control("?", kLong)), HostGone);
  EXPECT_TRUE(log.hasPart("dropped: its request failed: on purpose")) << log.text();
}

}  // namespace
}  // namespace host
