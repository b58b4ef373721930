#include "remote/Acceptor.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "host/remote/ServerUnderTest.h"
#include "remote/SocketAddress.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

Descriptor clientSocket() {
  return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

// An acceptor at a socket that is bound, and does not listen yet.
class AcceptorAtASocket : public ::testing::Test {
 protected:
  AcceptorAtASocket() { EXPECT_EQ(::bind(socket.get(), address.get(), address.size()), 0); }

  void connect(const Descriptor& client) {
    EXPECT_EQ(::connect(client.get(), address.get(), address.size()), 0);
  }

  void expectsToTake(int clients) {
    while (taken < clients && loop.run_one_for(kLong) == 1) continue;
    EXPECT_EQ(taken, clients);
  }

  const support::TemporaryFolder folder;
  const SocketAddress address{folder / "socket"};
  const Descriptor socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
  asio::io_context loop;
  int taken = 0;
};

// A socket that does not listen yet is reported as ready, and accepts nobody.
TEST_F(AcceptorAtASocket, GoesOnAfterAFailureThatIsNoClients) {
  const support::LogCapture log;
  Acceptor acceptor(loop, socket.get(), [&](Acceptor::Socket) { ++taken; });
  loop.run_one_for(kLong);
  EXPECT_TRUE(log.has(2, "cannot accept clients for a moment: Invalid argument")) << log.text();
  ASSERT_EQ(::listen(socket.get(), 1), 0);
  const Descriptor client = clientSocket();
  connect(client);
  expectsToTake(1);
}

TEST_F(AcceptorAtASocket, HearsTheNextClientAfterAPauseThatThereWasNoMemoryFor) {
  Acceptor acceptor(loop, socket.get(), [&](Acceptor::Socket) { ++taken; });
  {
    const support::NoMemory none;
    EXPECT_NO_THROW(loop.run_one_for(kLong));
  }
  ASSERT_EQ(::listen(socket.get(), 1), 0);
  const Descriptor client = clientSocket();
  connect(client);
  expectsToTake(1);
}

TEST_F(AcceptorAtASocket, HearsTheNextClientAfterOneThatItHadNoMemoryToRefuse) {
  ASSERT_EQ(::listen(socket.get(), 2), 0);
  Acceptor acceptor(loop, socket.get(), [&](Acceptor::Socket) { ++taken; });
  const Descriptor refused = clientSocket();
  const Descriptor next = clientSocket();
  connect(refused);
  Descriptor lowest(::dup(0));
  {
    const support::SoftLimit full(RLIMIT_NOFILE, static_cast<rlim_t>(lowest.get()));
    lowest.reset();
    const support::NoMemory none;
    EXPECT_NO_THROW(loop.run_one_for(kLong));
  }
  EXPECT_EQ(taken, 0);
  connect(next);
  expectsToTake(1);
}

}  // namespace
}  // namespace host
