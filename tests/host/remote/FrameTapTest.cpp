#include "remote/FrameTap.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "base/Mutex.h"
#include "host/remote/HeldRequests.h"
#include "host/remote/ServerUnderTest.h"

namespace host {
namespace {

// What a listener was shown: "client-1 > call 1".
class Shown {
 public:
  bool add(const TappedFrame& tapped) {
    const MutexLock lock(m_mutex);
    m_lines.push_back(tapped.peer + (tapped.fromClient ? " > " : " < ") +
                      std::to_string(static_cast<int>(tapped.frame.kind)) + ' ' +
                      std::to_string(tapped.frame.id));
    return true;
  }
  std::vector<std::string> lines() const {
    const MutexLock lock(m_mutex);
    return m_lines;
  }

 private:
  mutable Mutex m_mutex;
  std::vector<std::string> m_lines;
};

using Lines = std::vector<std::string>;

FrameTap::Listener into(Shown& shown) {
  return [&shown](const TappedFrame& tapped) { return shown.add(tapped); };
}

void showFrame(FrameTap& tap, const std::string& peer) {
  static MessagePackCodec codec;
  tap.show({peer, "", codec, true, {FrameKind::call, 1, ""}});
}

TEST(FrameTap, ShowsTheFramesOfBothSocketsInBothDirections) {
  ServerUnderTest server(
      [](const ControlRequest& request) { request.channel->reply(request.text); });
  Shown shown;
  const auto number = server.tap().add(into(shown));
  RemoteClient caller(server.socket, "json");
  EXPECT_TRUE(echoes(caller));
  RemoteClient operating(server.controlSocket);
  EXPECT_EQ(operating.control("{}", kLong), "{}");
  server.tap().remove(number);
  EXPECT_TRUE(echoes(caller));
  EXPECT_EQ(shown.lines(), (Lines{"client-1 > 0 0", "client-1 > 1 1", "client-1 < 2 1",
                                  "client-2 > 4 1", "client-2 < 5 1"}));
}

TEST(FrameTap, ShowsTheProcessAndTheContent) {
  ServerUnderTest server;
  std::string seen;
  const auto number = server.tap().add([&seen](const TappedFrame& tapped) {
    std::stringstream stream{std::string(tapped.frame.payload)};
    Method method;
    if (tapped.fromClient && tapped.codec.decode(stream, method)) {
      seen = tapped.origin + ' ' + support::textOf(method);
    }
    return true;
  });
  RemoteClient caller(server.socket, "json");
  EXPECT_TRUE(echoes(caller));
  server.tap().remove(number);
  EXPECT_EQ(seen, "uid " + std::to_string(::getuid()) + ", pid " + std::to_string(::getpid()) +
                      " call echo\nin int number=5\n");
}

// Otherwise the client's next frame could be shown before the answer that it follows.
TEST(FrameTap, ShowsAnAnswerBeforeItsClientHasIt) {
  ServerHoldingRequests held;
  FrameSocket client(held.server.controlSocket);
  client.send({FrameKind::controlRequest, 1, "{}"});
  ASSERT_TRUE(held.has(1));
  bool early = true;
  const auto number = held.server.tap().add([&](const TappedFrame&) {
    char first = 0;
    early = ::recv(client.descriptor(), &first, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
    return true;
  });
  held.requests.take().channel->reply("{}");
  held.server.tap().remove(number);
  EXPECT_FALSE(early);
  EXPECT_EQ(received(client).payload, "{}");
}

TEST(FrameTap, WhatAListenerSendsIsNotShown) {
  FrameTap tap;
  Shown shown;
  static_cast<void>(tap.add([&](const TappedFrame& tapped) {
    showFrame(tap, "of the listener");
    return shown.add(tapped);
  }));
  showFrame(tap, "a");
  EXPECT_EQ(shown.lines(), Lines{"a > 1 1"});
}

TEST(FrameTap, AListenerThatIsDoneOrThrowsLosesNothingForOthers) {
  FrameTap tap;
  int done = 0;
  static_cast<void>(tap.add([&](const TappedFrame&) { return ++done < 2; }));
  static_cast<void>(
      tap.add([](const TappedFrame&) -> bool { throw std::runtime_error("no memory"); }));
  Shown shown;
  static_cast<void>(tap.add(into(shown)));
  for (const char* const peer : {"a", "b", "c"}) showFrame(tap, peer);
  EXPECT_EQ(done, 2);
  EXPECT_EQ(shown.lines(), (Lines{"a > 1 1", "b > 1 1", "c > 1 1"}));
}

}  // namespace
}  // namespace host
