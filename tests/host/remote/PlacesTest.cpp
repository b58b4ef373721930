#include "remote/Places.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "base/Error.h"
#include "host/remote/ServerUnderTest.h"
#include "remote/RemoteClient.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"

namespace host {
namespace {

constexpr uid_t kRoot = 0;
constexpr uid_t kOwn = 1000;
constexpr uid_t kOther = 1001;
constexpr uid_t kThird = 1002;

class TakenPlaces : public ::testing::Test {
 protected:
  void take(uid_t user, int count, std::size_t most) {
    for (int i = 0; i < count; ++i) m_taken.push_back(m_places.take(user, most));
  }
  std::string refusal(uid_t user, std::size_t most) {
    return errorOf([&] { take(user, 1, most); });
  }
  void leaveOne() { m_taken.pop_back(); }

 private:
  Places m_places{kOwn};
  std::vector<Places::Place> m_taken;
};

TEST_F(TakenPlaces, OneUserHasHalfAndTheOthersHaveTheRest) {
  take(kOther, 5, 10);
  EXPECT_EQ(refusal(kOther, 10),
            "5 clients of uid 1001 are connected, which is the most of one user");
  take(kThird, 4, 10);
  take(kOwn, 1, 10);
  EXPECT_EQ(refusal(kThird, 10), "10 clients are connected, which is the most");
}

TEST_F(TakenPlaces, RootAndTheHostsOwnUserMayHaveAll) {
  take(kRoot, 10, 10);
  EXPECT_EQ(refusal(kOwn, 10), "10 clients are connected, which is the most");
  take(kOwn, 20, 30);
}

TEST_F(TakenPlaces, AreFreeAgainWhenTheirClientIsGone) {
  take(kOther, 5, 10);
  leaveOne();
  take(kOther, 1, 10);
  EXPECT_NE(refusal(kOther, 10), "");
}

TEST_F(TakenPlaces, OfOneEachUserMayHaveIt) {
  take(kOther, 1, 1);
  EXPECT_EQ(refusal(kOther, 1), "1 clients are connected, which is the most");
  EXPECT_EQ(refusal(kOther, 3),
            "1 clients of uid 1001 are connected, which is the most of one user");
}

// The first clients are another user's, and the next are the host's.
int g_connections = 0;
uid_t otherThenOwn(int) {
  return ++g_connections <= 3 ? kUnknownUser : ::geteuid();
}

TEST(RemoteServer, RefusesAUserBeyondItsShareAndServesTheHostsOwn) {
  g_connections = 0;
  RemoteServer::Limits limits;
  limits.clients = 4;
  limits.user = otherThenOwn;
  ServerUnderTest server({}, limits);
  const support::LogCapture log(4);
  const RemoteClient one(server.socket);
  const RemoteClient two(server.socket);
  ASSERT_TRUE(server.becomes([&] { return server.clients() == 2; }));
  const std::string why = "2 clients of uid " + std::to_string(kUnknownUser) +
                          " are connected, which is the most of one user";
  FrameSocket refused(server.socket);
  Frame frame;
  ASSERT_TRUE(refused.receive(frame, std::chrono::steady_clock::now() + kLong));
  EXPECT_EQ(frame.payload, R"({"ok":false,"error":")" + why + R"(; try again later"})");
  EXPECT_TRUE(log.waitForPart("client turned away: " + why)) << log.text();
  const RemoteClient own(server.socket);
  EXPECT_TRUE(server.becomes([&] { return server.clients() == 3; }));
}

}  // namespace
}  // namespace host
