#include "remote/Acceptor.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <optional>

#include "host/remote/RawSocket.h"
#include "host/remote/ServerUnderTest.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

// A socket that is bound, but does not listen yet: accept fails, while the loop finds it readable.
class AcceptorAtBoundSocket : public ::testing::Test {
 protected:
  AcceptorAtBoundSocket() {
    const SocketAddress address(file);
    EXPECT_EQ(::bind(socket.get(), address.get(), address.size()), 0);
  }

  void start() {
    acceptor.emplace(loop, socket.get(), [this](const Descriptor&) { ++accepted; });
  }
  void expectAccepts(int clients) {
    while (accepted < clients && loop.runOne()) continue;
    EXPECT_EQ(accepted, clients);
  }
  void expectListensAndAccepts() {
    ASSERT_EQ(::listen(socket.get(), 1), 0);
    const RawSocket client(file);
    expectAccepts(1);
  }

  const support::TemporaryFolder folder;
  const std::filesystem::path file = folder / "socket";
  const Descriptor socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
  IoLoop loop;
  int accepted = 0;
  std::optional<Acceptor> acceptor;
};

TEST_F(AcceptorAtBoundSocket, ContinuesAfterAnErrorThatNoClientCaused) {
  const support::LogCapture log;
  start();
  loop.runOne();
  EXPECT_TRUE(log.has(2, "cannot accept clients for a moment: Invalid argument")) << log.text();
  expectListensAndAccepts();
}

TEST_F(AcceptorAtBoundSocket, ContinuesWithoutMemoryForThePause) {
  start();
  {
    const support::NoMemory none;
    EXPECT_NO_THROW(loop.runOne());
  }
  expectListensAndAccepts();
}

TEST_F(AcceptorAtBoundSocket, ContinuesWithoutMemoryForARefusal) {
  ASSERT_EQ(::listen(socket.get(), 2), 0);
  start();
  const RawSocket refused(file);
  Descriptor lowest(::dup(0));
  {
    const support::SoftLimit full(RLIMIT_NOFILE, static_cast<rlim_t>(lowest.get()));
    lowest.reset();
    const support::NoMemory none;
    EXPECT_NO_THROW(loop.runOne());
  }
  EXPECT_EQ(accepted, 0);
  const RawSocket next(file);
  expectAccepts(1);
}

}  // namespace
}  // namespace host
