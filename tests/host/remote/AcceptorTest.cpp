#include "remote/Acceptor.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "host/remote/ServerUnderTest.h"
#include "remote/SocketAddress.h"
#include "support/LogCapture.h"

namespace host {
namespace {

// A socket that does not listen yet is reported as ready, and accepts nobody.
TEST(Acceptor, GoesOnAfterAFailureThatIsNoClients) {
  const support::TemporaryFolder folder;
  const SocketAddress address(folder / "socket");
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  ASSERT_EQ(::bind(socket.get(), address.get(), address.size()), 0);
  const support::LogCapture log;
  asio::io_context loop;
  int taken = 0;
  Acceptor acceptor(loop, socket.get(), [&](Acceptor::Socket) { ++taken; });
  loop.run_one_for(kLong);
  EXPECT_TRUE(log.has(2, "cannot accept clients for a moment: Invalid argument")) << log.text();
  ASSERT_EQ(::listen(socket.get(), 1), 0);
  const Descriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(::connect(client.get(), address.get(), address.size()), 0);
  while (taken == 0 && loop.run_one_for(kLong) == 1) continue;
  EXPECT_EQ(taken, 1);
}

}  // namespace
}  // namespace host
