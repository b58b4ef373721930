#include "remote/Connection.h"

#include <gtest/gtest.h>

#include <asio/local/connect_pair.hpp>
#include <memory>
#include <utility>

namespace host {
namespace {

class CountingListener final : public Connection::Listener {
 public:
  std::optional<std::string> frame(Connection&, const Frame&) override { return std::nullopt; }
  void turnOver(Connection&) override {}
  void hungUp(Connection&) override { ++hangUps; }
  void closed(Connection&) override { ++closes; }

  int hangUps = 0;
  int closes = 0;
};

TEST(Connection, ReportsItsEndOnceWhicheverSideBegins) {
  for (const bool clientBegins : {true, false}) {
    asio::io_context loop;
    Connection::Socket own(loop.get_executor());
    Connection::Socket client(loop.get_executor());
    asio::local::connect_pair(own, client);
    CountingListener listener;
    const auto connection = std::make_shared<Connection>(
        std::move(own), Connection::Entrance::calls, 1, listener, std::chrono::seconds(10));
    connection->makePeer();
    connection->open();
    if (clientBegins) {
      client.shutdown(Connection::Socket::shutdown_send);
      loop.run();
    }
    connection->close();
    connection->end();
    EXPECT_EQ(listener.hangUps, 1) << clientBegins;
    EXPECT_EQ(listener.closes, 1) << clientBegins;
  }
}

}  // namespace
}  // namespace host
