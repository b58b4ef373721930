#include "remote/Connection.h"

#include <gtest/gtest.h>

#include <asio/local/connect_pair.hpp>
#include <memory>
#include <utility>

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
    asio::io_context loop;
    Connection::Socket own(loop.get_executor());
    Connection::Socket client(loop.get_executor());
    asio::local::connect_pair(own, client);
    CountingListener listener;
    const auto connection = std::make_shared<Connection>(
        std::move(own), Connection::Endpoint::calls, 1, listener, std::chrono::seconds(10));
    connection->makePeer();
    connection->read();
    if (clientFirst) {
      client.shutdown(Connection::Socket::shutdown_send);
      loop.run();
    }
    connection->close();
    connection->end();
    EXPECT_EQ(listener.disconnects, 1) << clientFirst;
    EXPECT_EQ(listener.closes, 1) << clientFirst;
  }
}

}  // namespace
}  // namespace host
