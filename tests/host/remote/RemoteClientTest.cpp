#include "remote/RemoteClient.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <functional>
#include <sstream>

#include "remote/SocketFile.h"
#include "support/ErrorOf.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using namespace std::string_literals;
using Limit = RemoteClient::Limit;

constexpr Limit kShort{10};
constexpr Limit kDeadline{10'000};

// A client at a socket at which the test plays the host.
class ClientOfAPlayedHost : public testing::Test {
 protected:
  ClientOfAPlayedHost() : m_listener(m_folder / "socket"), m_client(m_folder / "socket") {
    m_host.reset(::accept4(m_listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
  }

  void sendFrame(const Frame& frame) { sendBytes(encodeFrame(frame)); }
  void sendBytes(const std::string& bytes) {
    EXPECT_EQ(::send(m_host.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  // The reason of a refusal; empty for another end.
  static std::string refusalOf(const std::function<void()>& operation) try {
    operation();
    return "";
  } catch (const Refused& refused) {
    return refused.what();
  } catch (const HostGone&) {
    return "";
  }
  static std::string timed(std::int64_t utc, const std::string& event) {
    const EventStampBytes time = encodeEventStamp({std::chrono::seconds(utc), {}});
    return std::string(time.data(), time.size()) + event;
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

TEST(RemoteClient, ReportsThatNoHostListens) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "socket";
  try {
    RemoteClient client(socket);
    FAIL() << "connected";
  } catch (const NoHost& error) {
    EXPECT_EQ(error.what(), "no host at " + socket.string() + ": No such file or directory");
  }
}

TEST(RemoteClient, RefusesAnUnknownCodec) {
  const support::TemporaryFolder folder;
  EXPECT_THROW(RemoteClient(folder / "socket", "cbor"), Error);
}

TEST_F(ClientOfAPlayedHost, StopsWaitingAtTheLimit) {
  Method method("getTime", Method::call);
  EXPECT_FALSE(m_client.call(method, kShort));
  EXPECT_FALSE(m_client.nextEvent(kShort));
  EXPECT_FALSE(m_client.control("{}", kShort));
  EXPECT_FALSE(m_client.barrier(kShort));
}

TEST_F(ClientOfAPlayedHost, IgnoresTheLateReplyToAnEarlierCall) {
  Method method("getTime", Method::call);
  EXPECT_FALSE(m_client.call(method, kShort));
  sendFrame({FrameKind::reply, 1, encoded("late")});
  sendFrame({FrameKind::reply, 2, encoded("right")});
  const auto reply = m_client.call(method, kDeadline);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->getName(), "right");
}

TEST_F(ClientOfAPlayedHost, KeepsEventsReceivedBeforeAReply) {
  sendFrame({FrameKind::event, 0, encoded("one")});
  sendFrame({FrameKind::event, 0, encoded("two")});
  sendFrame({FrameKind::reply, 1, encoded("reply")});
  Method method("getTime", Method::call);
  EXPECT_TRUE(m_client.call(method, kDeadline));
  EXPECT_EQ(m_client.nextEvent(Limit(0))->getName(), "one");
  EXPECT_EQ(m_client.nextEvent(Limit(0))->getName(), "two");
  EXPECT_FALSE(m_client.nextEvent(Limit(0)));
}

TEST_F(ClientOfAPlayedHost, KnowsTheTimeOfATimedEvent) {
  sendFrame({FrameKind::timedEvent, 0, timed(60, encoded("one"))});
  sendFrame({FrameKind::event, 0, encoded("two")});
  const auto one = m_client.nextReceivedEvent(kDeadline);
  ASSERT_TRUE(one && one->time);
  EXPECT_EQ(one->method.getName(), "one");
  EXPECT_EQ(one->time->utc, std::chrono::seconds(60));
  EXPECT_FALSE(m_client.nextReceivedEvent(kDeadline)->time);
}

TEST_F(ClientOfAPlayedHost, ControlSkipsItemsAndTheAnswersOfOtherRequests) {
  sendFrame({FrameKind::controlReply, 77, "of another request"});
  sendFrame({FrameKind::controlItem, 1, "item"});
  sendFrame({FrameKind::controlReply, 1, "reply"});
  EXPECT_EQ(m_client.control("{}", kDeadline), "reply");
}

// The host disconnects when it has handled everything; a stopped one does not.
TEST_F(ClientOfAPlayedHost, BarrierSucceedsOnlyWhenTheHostDisconnects) {
  Method method("setAlarm", Method::call);
  m_client.post(method);
  EXPECT_FALSE(m_client.barrier(kShort));
  sendFrame({FrameKind::reply, 1, encoded("setAlarm")});
  EXPECT_FALSE(m_client.barrier(kShort));
  m_host.reset();
  EXPECT_TRUE(m_client.barrier(kDeadline));
}

TEST_F(ClientOfAPlayedHost, ReportsThatTheHostDisconnected) {
  m_host.reset();
  EXPECT_THROW(static_cast<void>(m_client.nextEvent(kDeadline)), HostGone);
  Method method("getTime", Method::call);
  EXPECT_THROW(m_client.post(method), HostGone);
}

TEST_F(ClientOfAPlayedHost, ReportsTheReasonOfARefusal) {
  const std::pair<const char*, const char*> refusals[] = {
      {R"({"ok":false,"error":"64 clients are enough"})", "64 clients are enough"},
      {R"({"ok":false})", "refused"},
      {R"({"ok":false,"error":5})", "refused"},
      {"5", "refused"},
      {"{", "refused"},
  };
  for (const auto& [reply, reason] : refusals) {
    sendFrame({FrameKind::controlReply, 0, reply});
    EXPECT_EQ(refusalOf([this] { static_cast<void>(m_client.control("{}", kDeadline)); }), reason)
        << reply;
  }
  sendFrame({FrameKind::controlReply, 0, refusals[0].first});
  Method method("getTime", Method::call);
  EXPECT_EQ(refusalOf([&] { static_cast<void>(m_client.call(method, kDeadline)); }),
            refusals[0].second);
}

TEST_F(ClientOfAPlayedHost, ReportsTheReasonOfARefusalThatCameBeforeItsFirstRequest) {
  sendFrame({FrameKind::controlReply, 0, R"({"ok":false,"error":"64 clients are enough"})"});
  m_host.reset();
  Method method("getTime", Method::call);
  EXPECT_EQ(refusalOf([&] { static_cast<void>(m_client.call(method, kDeadline)); }),
            "64 clients are enough");
}

TEST_F(ClientOfAPlayedHost, ReportsThatTheServerIsNoClockHost) {
  const std::string call = encodeFrame({FrameKind::call, 1, encoded("getTime")});
  const std::pair<std::string, const char*> answers[] = {
      {encodeFrame({FrameKind::event, 0, "nonsense"}), "it sent bytes that are not a method"},
      {encodeFrame({FrameKind::timedEvent, 0, "12345678901"}), "it sent an event without its time"},
      {encodeFrame({FrameKind::timedEvent, 0, timed(-1, encoded("one"))}),
       "it sent an event without its time"},
      {encodeFrame({FrameKind::timedEvent, 0, timed(0, "")}),
       "it sent bytes that are not a method"},
      {call, "it sent a frame that only clients send"},
      {"HTTP/1.1 400 Bad Request\r\n", "frame of 1213486160 bytes announced, 1048576 is the limit"},
  };
  for (const auto& [bytes, reason] : answers) {
    sendBytes(bytes);
    EXPECT_EQ(errorOf([this] { static_cast<void>(m_client.nextEvent(kDeadline)); }),
              std::string("not a clock host: ") + reason);
  }
}

TEST_F(ClientOfAPlayedHost, RefusesARequestThatIsTooLong) {
  Method method("m", Method::call);
  method.addStringParameter("p", std::string(kMaxPayload, 'x'), Parameter::in);
  EXPECT_THROW(m_client.post(method), Error);
}

}  // namespace
}  // namespace host
