#include "remote/Connection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

#include "support/LogCapture.h"

namespace host {
namespace {

class CountingListener final : public Connection::Listener {
 public:
  std::optional<std::string> onFrame(Connection&, const Frame&) override { return std::nullopt; }
  std::size_t framesAtOnce(const Connection&) const override { return 1; }
  void onTurnOver(Connection&) override {}
  void onDisconnect(Connection&) override { ++disconnects; }
  void onClosed(Connection&) override { ++closes; }

  int disconnects = 0;
  int closes = 0;
};

std::shared_ptr<Connection> connectionOn(int socket, Connection::Endpoint endpoint,
                                         std::uint32_t number, IoLoop& loop,
                                         CountingListener& listener) {
  auto connection = std::make_shared<Connection>(loop, Descriptor(socket), endpoint, number,
                                                 listener, std::chrono::seconds(10));
  connection->makePeer();
  return connection;
}

// A client of this process, and its connection to the host, which is read.
struct ConnectedClient {
  explicit ConnectedClient(Connection::Endpoint endpoint = Connection::Endpoint::calls) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) std::abort();
    socket.reset(ends[0]);
    connection = connectionOn(ends[1], endpoint, 1, loop, listener);
    connection->read();
  }

  IoLoop loop;
  CountingListener listener;
  Descriptor socket;
  std::shared_ptr<Connection> connection;
};

TEST(Connection, ReportsItsEndOnceWhicheverSideDisconnectsFirst) {
  for (const bool clientFirst : {true, false}) {
    ConnectedClient client;
    if (clientFirst) {
      ::shutdown(client.socket.get(), SHUT_WR);
      client.loop.runAllReady();
    }
    client.connection->close();
    client.connection->end();
    EXPECT_EQ(client.listener.disconnects, 1) << clientFirst;
    EXPECT_EQ(client.listener.closes, 1) << clientFirst;
  }
}

// In one pass of the loop the socket has room, bytes to read, and a hang-up.
TEST(Connection, IsNotReadAfterItsOutboxClosedIt) {
  ConnectedClient client(Connection::Endpoint::control);
  auto& peer = client.connection->peer();
  const std::string payload(kMaxPayload, 'x');
  while (peer.outbox().idle()) {
    ASSERT_TRUE(peer.send({FrameKind::controlReply, 1, payload}));
  }
  client.loop.runAllReady();
  client.socket.reset();
  client.loop.runAllReady();
  EXPECT_EQ(client.listener.disconnects, 1);
  EXPECT_EQ(client.listener.closes, 1);
}

// As with a socket whose other end the kernel does not know.
TEST(Connection, IsDroppedWithProcessZeroIfThePeerIsUnknown) {
  const support::LogCapture log(3);
  IoLoop loop;
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  const Descriptor reader(ends[0]);
  CountingListener listener;
  const auto connection = connectionOn(ends[1], Connection::Endpoint::calls, 7, loop, listener);
  static_cast<void>(connection->peer().send({FrameKind::reply, 1, "x"}));
  loop.runAllReady();
  EXPECT_EQ(listener.closes, 1);
  EXPECT_TRUE(
      log.has("client 7 (process 0) dropped: sending failed: Socket operation on non-socket"))
      << log.text();
}

// In one pass of the loop: the disconnect, and the task that the failure has posted.
TEST(Connection, LogsAFailedSendThoughTheClientDisconnectsAtOnce) {
  const support::LogCapture log(3);
  ConnectedClient client;
  client.connection->peer().outbox().fail(ENOBUFS);
  client.socket.reset();
  client.loop.runAllReady();
  EXPECT_EQ(client.listener.disconnects, 1);
  EXPECT_EQ(client.listener.closes, 1);
  EXPECT_TRUE(log.hasPart("dropped: sending failed: No buffer space available")) << log.text();
}

}  // namespace
}  // namespace host
