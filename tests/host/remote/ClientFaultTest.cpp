// A fault of one client drops that client, with one log line.
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "host/remote/RawSocket.h"
#include "host/remote/ServerUnderTest.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

using namespace std::string_literals;

std::string frame(FrameKind kind, std::string_view payload) {
  return encodeFrame({kind, 1, payload});
}

// What the host logged, without the client's process number.
std::vector<std::string> linesOf(const support::LogCapture& log) {
  std::vector<std::string> lines;
  for (const LogEntry& entry : log.entries()) {
    if (entry.component != "clockhost") continue;
    const std::size_t begin = entry.text.find(" (process ");
    const std::size_t end = entry.text.find(')', begin);
    lines.push_back(begin == std::string::npos
                        ? entry.text
                        : entry.text.substr(0, begin) + entry.text.substr(end + 1));
  }
  return lines;
}

struct Fault {
  std::string bytes;
  std::string line;
};

TEST(ClientFault, WrongBytesDropTheirClientWithOneLine) {
  const Fault faults[] = {
      {"hello, clock\r\n\r\n", "frame of 1751477356 bytes announced, 1048576 is the limit"},
      {"\0\0\0\5\x09\0\0\0\0"s, "frame of unknown kind 9"},
      {frame(FrameKind::reply, ""), "frame of kind 2, which clients do not send"},
      {frame(FrameKind::event, ""), "frame of kind 3, which clients do not send"},
      {frame(FrameKind::controlReply, ""), "frame of kind 5, which clients do not send"},
      {frame(FrameKind::controlItem, ""), "frame of kind 6, which clients do not send"},
      {frame(FrameKind::hello, "cbor"), "unknown codec \"cbor\""},
      {frame(FrameKind::hello, ""), "unknown codec \"\""},
      {frame(FrameKind::hello, "+time"), "unknown codec \"+time\""},
      {frame(FrameKind::hello, "json+time+time"), "unknown codec \"json+time+time\""},
      {frame(FrameKind::hello, "json+"), "unknown codec \"json+\""},
      {frame(FrameKind::hello, "a\n\xFF\x1B[2J"), "unknown codec \"a\\n\\xFF\\x1B[2J\""},
      {frame(FrameKind::hello, std::string(79, 'n') + "\u20AC"),
       "unknown codec \"" + std::string(79, 'n') + "...\" (82 bytes)"},
      {frame(FrameKind::hello, std::string(100000, 'n')),
       "unknown codec \"" + std::string(80, 'n') + "...\" (100000 bytes)"},
      {frame(FrameKind::call, "?") + frame(FrameKind::hello, "json"),
       "codec chosen after the first frame"},
      {frame(FrameKind::hello, "json") + frame(FrameKind::hello, "json"),
       "codec chosen after the first frame"},
      {frame(FrameKind::hello, "json") + frame(FrameKind::call, R"({"name":"fail"})"),
       "its request failed: on purpose"},
  };
  ServerUnderTest server;
  RemoteClient neighbour(server.socket);
  int number = 1;
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.line);
    const support::LogCapture log(4);
    RawSocket client(server.socket);
    client.send(fault.bytes);
    EXPECT_TRUE(client.isDisconnected(kLong));
    EXPECT_TRUE(echoes(neighbour));
    EXPECT_EQ(linesOf(log),
              std::vector{"client " + std::to_string(++number) + " dropped: " + fault.line});
  }
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 0; }));
}

TEST(ClientFault, DisconnectIsLoggedOnlyInTheMiddleOfAFrame) {
  ServerUnderTest server;
  const support::LogCapture log(4);
  const std::string whole = frame(FrameKind::call, "undecodable");
  for (std::size_t sent = 0; sent <= whole.size(); ++sent) {
    RawSocket(server.socket).send(whole.substr(0, sent));
  }
  EXPECT_TRUE(server.becomes([&] { return linesOf(log).size() >= whole.size() - 1; }));
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 0; }));
  const auto lines = linesOf(log);
  EXPECT_EQ(lines.size(), whole.size() - 1);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_NE(lines[i].find("dropped: disconnected in the middle of a frame"), std::string::npos);
  }
}

TEST(ClientFault, ClientThatDoesNotFinishAFrameIsDroppedAtTheTimeout) {
  ServerUnderTest server({.unfinished = std::chrono::milliseconds(20)});
  const support::LogCapture log(4);
  RawSocket idle(server.socket);
  RawSocket half(server.socket);
  half.send(frame(FrameKind::call, "undecodable").substr(0, 10));
  EXPECT_TRUE(half.isDisconnected(kLong));
  EXPECT_EQ(linesOf(log), std::vector{"client 2 dropped: did not finish a frame"s});
  EXPECT_EQ(server.clients(), 1U);
}

TEST(ClientFault, StreamThatIsAlwaysInTheMiddleOfAFrameIsNoFault) {
  ServerUnderTest server({.unfinished = std::chrono::milliseconds(500)});
  const support::LogCapture log(4);
  RawSocket client(server.socket);
  const std::string whole = frame(FrameKind::call, "undecodable");
  EXPECT_TRUE(client.send(whole.substr(0, 7)));
  for (int i = 0; i < 24; ++i) {
    EXPECT_TRUE(client.send(whole.substr(7) + whole.substr(0, 7)));
    ASSERT_FALSE(client.isDisconnected(std::chrono::milliseconds(50))) << log.text();
  }
  EXPECT_EQ(server.clients(), 1U);
  EXPECT_TRUE(linesOf(log).empty()) << log.text();
}

TEST(ClientFault, ObserverThatDoesNotReadIsDroppedAndDelaysNoOther) {
  ServerUnderTest server;
  const support::LogCapture log(4);
  RemoteClient reading(server.socket);
  RemoteClient stuck(server.socket);
  ASSERT_TRUE(observe(reading) && observe(stuck));
  Method event("event", Method::call);
  event.addStringParameter("text", std::string(1000, 'e'), Parameter::in);
  int sent = 0;
  while (server.device.notify(event) == 2 && ++sent < 100000) {
    ASSERT_TRUE(reading.nextEvent(kLong));
  }
  EXPECT_GT(sent, 1000);
  EXPECT_LT(sent, 10000);
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 1; }));
  EXPECT_EQ(linesOf(log), std::vector{"client 2 dropped: does not read its messages"s});
  EXPECT_TRUE(echoes(reading));
}

TEST(ClientFault, ObserverIsDroppedWithoutMemoryForItsEvent) {
  ServerUnderTest server;
  const support::LogCapture log(4);
  RemoteClient client(server.socket);
  ASSERT_TRUE(observe(client));
  Method event("event", Method::call);
  event.addStringParameter("text", std::string(100'000, 'e'), Parameter::in);
  {
    const support::NoMemory none;
    EXPECT_EQ(server.device.notify(event), 0);
  }
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 0; }));
  EXPECT_EQ(linesOf(log), std::vector{"client 1 dropped: sending failed: Cannot allocate memory"s});
}

TEST(ClientFault, CallerThatReadsLateGetsAllReplies) {
  ServerUnderTest server;
  const support::LogCapture log(4);
  RemoteClient neighbour(server.socket);
  FrameSocket client(server.socket);
  client.send({FrameKind::hello, 0, "json"});
  const std::string call = R"({"name":"repeat","parameters":[{"name":"bytes","value":100000}]})";
  for (std::uint32_t id = 0; id < 100; ++id) client.send({FrameKind::call, id, call});
  EXPECT_TRUE(echoes(neighbour));
  for (std::uint32_t id = 0; id < 100; ++id) ASSERT_EQ(received(client).id, id);
  EXPECT_TRUE(linesOf(log).empty()) << log.text();
}

TEST(ClientFault, ClientThatSendsNoMoreAndDoesNotReadIsDisconnectedAtTheTimeout) {
  ServerUnderTest server({.unfinished = std::chrono::milliseconds(20)});
  FrameSocket client(server.socket);
  client.send({FrameKind::hello, 0, "json"});
  client.send(
      {FrameKind::call, 1, R"({"name":"repeat","parameters":[{"name":"bytes","value":1000000}]})"});
  client.finishSending();
  pollfd waited{client.descriptor(), 0, 0};
  EXPECT_EQ(::poll(&waited, 1, static_cast<int>(kLong.count())), 1);
  EXPECT_NE(waited.revents & POLLHUP, 0);
}

TEST(ClientFault, ClientIsTurnedAwayWhenNoDescriptorIsLeft) {
  ServerUnderTest server;
  RemoteClient served(server.socket);
  EXPECT_TRUE(echoes(served));
  const support::LogCapture log(4);
  // Created before the limit is set, connected after.
  const Descriptor late(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  Descriptor lowest(::dup(0));
  {
    const support::SoftLimit full(RLIMIT_NOFILE, static_cast<rlim_t>(lowest.get()));
    lowest.reset();
    const SocketAddress address(server.socket);
    EXPECT_EQ(::connect(late.get(), address.get(), address.size()), 0);
    EXPECT_TRUE(log.waitForPart("client turned away"));
    EXPECT_TRUE(echoes(served));
  }
  EXPECT_EQ(linesOf(log), std::vector{"client turned away: no file descriptor is left"s});
  RemoteClient after(server.socket);
  EXPECT_TRUE(echoes(after));
}

}  // namespace
}  // namespace host
