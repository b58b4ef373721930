#include "apps/HostWait.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <sstream>
#include <thread>

#include "apps/ClockCtl.h"
#include "base/Descriptor.h"
#include "integration/OneLine.h"
#include "remote/SocketAddress.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using integration::expectOneLine;
using integration::Outcome;

constexpr int kAcceptLimit = 30'000;  // milliseconds

Outcome ctl(const std::string& line, const std::filesystem::path& socket) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = runClockCtl(splitScenarioLine(line), socket, out, err);
  return {status, out.str(), err.str()};
}

// A host that accepts one client, reads its request and disconnects, as one that ends at its start.
void disconnectOnce(const SocketFile& listener) {
  pollfd coming{listener.descriptor(), POLLIN, 0};
  ::poll(&coming, 1, kAcceptLimit);
  const Descriptor client(::accept4(listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
}

class NoHostYet : public ::testing::Test {
 protected:
  // What two verbs say, of which each asks at another socket.
  void expectNone(const std::string& reason) {
    const auto socket = m_folder / "later/socket";
    for (const auto& [line, suffix] : {std::pair{"wait-host 0.01s", ""},
                                       {"--wait-host 0.01s wait-host", ""},
                                       {"--wait-host 0.01s call getTime", ""},
                                       {"--wait-host 0.01s watch", ""},
                                       {"--wait-host 0.01s keys", ".control"}}) {
      expectOneLine(ctl(line, socket), 3,
                    {"no host answered within 0.01 s; ", socket.string() + suffix, reason});
    }
  }
  void makeFolder() { std::filesystem::create_directory(m_folder / "later"); }

  support::TemporaryFolder m_folder;
};

TEST_F(NoHostYet, IsStatusThreeAfterTheWait) {
  expectNone("No such file or directory");
  makeFolder();
  expectNone("No such file or directory");
  for (const char* const name : {"later/socket", "later/socket.control"}) {
    const Descriptor stale(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const SocketAddress address(m_folder / name);
    ASSERT_EQ(::bind(stale.get(), address.get(), address.size()), 0);
  }
  expectNone("Connection refused");
}

// Its log is not open yet, or it is stopped.
TEST_F(NoHostYet, IsAlsoOneThatListensAndDoesNotAnswer) {
  makeFolder();
  const SocketFile calls(m_folder / "later/socket");
  const SocketFile control(m_folder / "later/socket.control");
  expectNone(" is busy");
}

TEST_F(NoHostYet, IsAlsoOneThatDisconnects) {
  makeFolder();
  const auto socket = m_folder / "later/socket";
  const SocketFile listener(socket);
  std::thread serving([&] { disconnectOnce(listener); });
  const Outcome outcome = ctl("wait-host 0.01s", socket);
  EXPECT_EQ(outcome.status, 3) << outcome.err;
  serving.join();
}

TEST_F(NoHostYet, IsNotWaitedForAtAPathThatNoSocketCanHave) {
  expectOneLine(ctl("wait-host 30s", std::string(200, 'x')), 1, {"the path must have 1 to 107"});
}

}  // namespace
}  // namespace host
