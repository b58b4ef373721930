// What a client makes of hosts that are not there, or are not hosts.
#include "remote/RemoteClient.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <functional>
#include <sstream>

#include "host/remote/MethodText.h"
#include "remote/SocketFile.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using namespace std::string_literals;
using Limit = RemoteClient::Limit;

constexpr Limit kShort{10};
constexpr Limit kDeadline{10'000};

// A client whose host is played by the test.
class ClientOfATest : public testing::Test {
 protected:
  ClientOfATest() : m_listener(m_folder / "socket"), m_client(m_folder / "socket") {
    m_host.reset(::accept4(m_listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
  }

  void say(const Frame& frame) { sayBytes(encodeFrame(frame)); }
  void sayBytes(const std::string& bytes) {
    EXPECT_EQ(::send(m_host.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  // What the host said; "" when it is not a refusal.
  static std::string refusalOf(const std::function<void()>& operation) try {
    operation();
    return "";
  } catch (const Refused& refused) {
    return refused.what();
  } catch (const HostGone&) {
    return "";
  }
  static std::string encoded(const char* name) {
    Method method(name, Method::reply);
    std::stringstream stream;
    MessagePackCodec().encode(method, stream);
    return stream.str();
  }

  support::TemporaryFolder m_folder;
  SocketFile m_listener;
  RemoteClient m_client;
  Descriptor m_host;
};

TEST(RemoteClient, SaysThatNoHostIsThere) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "socket";
  try {
    RemoteClient client(socket);
    FAIL() << "connected";
  } catch (const NoHost& error) {
    EXPECT_EQ(error.what(), "no host at " + socket.string() + ": No such file or directory");
  }
}

TEST(RemoteClient, RefusesACodecNobodyKnows) {
  const support::TemporaryFolder folder;
  EXPECT_THROW(RemoteClient(folder / "socket", "cbor"), Error);
}

TEST_F(ClientOfATest, GivesUpAtItsLimit) {
  Method method("getTime", Method::call);
  EXPECT_FALSE(m_client.call(method, kShort));
  EXPECT_FALSE(m_client.nextEvent(kShort));
  EXPECT_FALSE(m_client.control("{}", kShort));
  EXPECT_FALSE(m_client.barrier(kShort));
}

TEST_F(ClientOfATest, DoesNotTakeALateReplyForTheNextOne) {
  Method method("getTime", Method::call);
  EXPECT_FALSE(m_client.call(method, kShort));
  say({FrameKind::reply, 1, encoded("late")});
  say({FrameKind::reply, 2, encoded("right")});
  const auto reply = m_client.call(method, kDeadline);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->getName(), "right");
}

TEST_F(ClientOfATest, KeepsEventsThatComeBeforeAReply) {
  say({FrameKind::event, 0, encoded("one")});
  say({FrameKind::event, 0, encoded("two")});
  say({FrameKind::reply, 1, encoded("reply")});
  Method method("getTime", Method::call);
  EXPECT_TRUE(m_client.call(method, kDeadline));
  EXPECT_EQ(m_client.nextEvent(Limit(0))->getName(), "one");
  EXPECT_EQ(m_client.nextEvent(Limit(0))->getName(), "two");
  EXPECT_FALSE(m_client.nextEvent(Limit(0)));
}

TEST_F(ClientOfATest, ControlPassesItemsAndAnswersOfOthersOver) {
  say({FrameKind::controlReply, 77, "of nobody"});
  say({FrameKind::controlItem, 1, "item"});
  say({FrameKind::controlReply, 1, "reply"});
  EXPECT_EQ(m_client.control("{}", kDeadline), "reply");
}

// The host hangs up when it has handled all; one that has stopped does not, and a reply is no sign.
TEST_F(ClientOfATest, BarrierEndsWellOnlyWhenTheHostHangsUp) {
  Method method("setAlarm", Method::call);
  m_client.post(method);
  EXPECT_FALSE(m_client.barrier(kShort));
  say({FrameKind::reply, 1, encoded("setAlarm")});
  EXPECT_FALSE(m_client.barrier(kShort));
  m_host.reset();
  EXPECT_TRUE(m_client.barrier(kDeadline));
}

TEST_F(ClientOfATest, TellsThatTheHostHungUp) {
  m_host.reset();
  EXPECT_THROW(static_cast<void>(m_client.nextEvent(kDeadline)), HostGone);
  Method method("getTime", Method::call);
  EXPECT_THROW(m_client.post(method), HostGone);
}

constexpr const char* kTurnedAway = R"({"ok":false,"error":"64 clients are enough"})";

TEST_F(ClientOfATest, TellsWhyTheHostTurnedItAway) {
  say({FrameKind::controlReply, 0, kTurnedAway});
  EXPECT_EQ(refusalOf([this] { static_cast<void>(m_client.control("{}", kDeadline)); }),
            "64 clients are enough");
}

TEST_F(ClientOfATest, TellsThatTheHostTurnedItAwayWithoutAText) {
  for (const char* const reply : {R"({"ok":false})", R"({"ok":false,"error":5})", "5", "{"}) {
    say({FrameKind::controlReply, 0, reply});
    EXPECT_EQ(refusalOf([this] { static_cast<void>(m_client.control("{}", kDeadline)); }),
              "refused")
        << reply;
  }
}

TEST_F(ClientOfATest, TellsWhyTheHostTurnedItAwayBeforeItCouldAsk) {
  say({FrameKind::controlReply, 0, kTurnedAway});
  m_host.reset();
  Method method("getTime", Method::call);
  EXPECT_EQ(refusalOf([&] { static_cast<void>(m_client.call(method, kDeadline)); }),
            "64 clients are enough");
}

TEST_F(ClientOfATest, TellsThatWhatAnswersIsNoHost) {
  sayBytes("HTTP/1.1 400 Bad Request\r\n");
  EXPECT_THROW(static_cast<void>(m_client.nextEvent(kDeadline)), HostGone);
}

TEST_F(ClientOfATest, TellsThatAFrameIsNotAHosts) {
  say({FrameKind::call, 1, encoded("getTime")});
  EXPECT_THROW(static_cast<void>(m_client.nextEvent(kDeadline)), HostGone);
}

TEST_F(ClientOfATest, TellsThatAnEventIsNoMethod) {
  say({FrameKind::event, 0, "nonsense"});
  EXPECT_THROW(static_cast<void>(m_client.nextEvent(kDeadline)), HostGone);
}

TEST_F(ClientOfATest, RefusesToSendMoreThanAFrameHolds) {
  Method method("m", Method::call);
  method.addStringParameter("p", std::string(kMaxPayload, 'x'), Parameter::in);
  EXPECT_THROW(m_client.post(method), Error);
}

}  // namespace
}  // namespace host
