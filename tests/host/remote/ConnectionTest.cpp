#include "remote/Connection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
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

TEST(Connection, ReportsItsEndOnceWhicheverSideDisconnectsFirst) {
  for (const bool clientFirst : {true, false}) {
    IoLoop loop;
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    const Descriptor client(ends[0]);
    CountingListener listener;
    const auto connection =
        std::make_shared<Connection>(loop, Descriptor(ends[1]), Connection::Endpoint::calls, 1,
                                     listener, std::chrono::seconds(10));
    connection->makePeer();
    connection->read();
    if (clientFirst) {
      ::shutdown(client.get(), SHUT_WR);
      loop.runAllReady();
    }
    connection->close();
    connection->end();
    EXPECT_EQ(listener.disconnects, 1) << clientFirst;
    EXPECT_EQ(listener.closes, 1) << clientFirst;
  }
}

// In one pass of the loop the socket has room, bytes to read, and a hang-up.
TEST(Connection, IsNotReadAfterItsOutboxClosedIt) {
  IoLoop loop;
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  Descriptor client(ends[0]);
  CountingListener listener;
  const auto connection =
      std::make_shared<Connection>(loop, Descriptor(ends[1]), Connection::Endpoint::control, 1,
                                   listener, std::chrono::seconds(10));
  connection->makePeer();
  connection->read();
  const std::string payload(kMaxPayload, 'x');
  while (connection->peer().outbox().idle()) {
    ASSERT_TRUE(connection->peer().send({FrameKind::controlReply, 1, payload}));
  }
  loop.runAllReady();
  client.reset();
  loop.runAllReady();
  EXPECT_EQ(listener.disconnects, 1);
  EXPECT_EQ(listener.closes, 1);
}

// As with a socket whose other end the kernel does not know.
TEST(Connection, IsDroppedWithProcessZeroIfThePeerIsUnknown) {
  const support::LogCapture log(3);
  IoLoop loop;
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  const Descriptor reader(ends[0]);
  CountingListener listener;
  const auto connection =
      std::make_shared<Connection>(loop, Descriptor(ends[1]), Connection::Endpoint::calls, 7,
                                   listener, std::chrono::seconds(10));
  connection->makePeer();
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
  IoLoop loop;
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  Descriptor client(ends[0]);
  CountingListener listener;
  const auto connection =
      std::make_shared<Connection>(loop, Descriptor(ends[1]), Connection::Endpoint::calls, 1,
                                   listener, std::chrono::seconds(10));
  connection->makePeer();
  connection->read();
  connection->peer().outbox().fail(ENOBUFS);
  client.reset();
  loop.runAllReady();
  EXPECT_EQ(listener.disconnects, 1);
  EXPECT_EQ(listener.closes, 1);
  EXPECT_TRUE(log.hasPart("dropped: sending failed: No buffer space available")) << log.text();
}

}  // namespace
}  // namespace host
