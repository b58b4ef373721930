// Many requests of one client in flight: read together, answered together, in order.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "base/Descriptor.h"
#include "base/IoLoop.h"
#include "host/remote/RawSocket.h"
#include "remote/ClientLimits.h"
#include "remote/Connection.h"
#include "support/LogCapture.h"

namespace host {
namespace {

using Ids = std::vector<std::uint32_t>;

Ids idsBelow(std::uint32_t end) {
  Ids ids;
  for (std::uint32_t id = 0; id < end; ++id) ids.push_back(id);
  return ids;
}

// Answers each call with the same payload.
class Answering final : public Connection::Listener {
 public:
  std::optional<std::string> onFrame(Connection& from, const Frame& frame) override {
    ++frames;
    if (frame.kind != FrameKind::call) return "not a call";
    from.peer().outbox().send({FrameKind::reply, frame.id, answer});
    return std::nullopt;
  }
  std::size_t framesAtOnce(const Connection&) const override { return kFramesInTurn; }
  void onTurnOver(Connection& from) override {
    ++turnsOver;
    loop.post([connection = from.shared_from_this()] { connection->takeTurn(); });
  }
  void onDisconnect(Connection&) override {}
  void onClosed(Connection&) override { ++closes; }

  IoLoop loop;
  std::string answer = "12:00am";
  std::uint32_t frames = 0;
  int turnsOver = 0;
  int closes = 0;
};

// A connection whose loop runs in the test.
class Pipeline {
 public:
  explicit Pipeline(int type) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends.data()) != 0) std::abort();
    m_client.reset(ends[0]);
    m_connection = std::make_shared<Connection>(m_listener.loop, Descriptor(ends[1]),
                                                Connection::Endpoint::calls, 1, m_listener,
                                                std::chrono::milliseconds(10'000));
    m_connection->makePeer();
    m_connection->read();
  }
  ~Pipeline() { m_connection->close(); }

  // Sends what the socket takes, and lets the host handle it. Returns the bytes sent.
  std::size_t send(std::string_view bytes) {
    const ssize_t sent = ::send(m_client.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    handle();
    return sent < 0 ? 0 : static_cast<std::size_t>(sent);
  }

  // The ids of the answers that one recv brings.
  Ids receive() {
    std::array<char, 65536> bytes;
    const ssize_t got = ::recv(m_client.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    handle();
    std::string_view rest(bytes.data(), got < 0 ? 0 : static_cast<std::size_t>(got));
    while (!rest.empty()) {
      const auto space = m_reader.space();
      m_reader.commit(rest.copy(space.data(), space.size()));
      rest.remove_prefix(std::min(rest.size(), space.size()));
    }
    Ids ids;
    Frame answer;
    while (m_reader.next(answer) == FrameReader::Outcome::frame) ids.push_back(answer.id);
    return ids;
  }

  // The ids of all answers, from one send for each turn. On a busy machine a turn may reach its
  // time limit before its last frame.
  Ids receiveTurns() {
    Ids all;
    for (int turns = 1 + std::exchange(m_listener.turnsOver, 0); turns > 0; --turns) {
      for (const std::uint32_t id : receive()) all.push_back(id);
    }
    return all;
  }

  // Repeats until the host has handled all bytes, which are whole frames, in one turn.
  void sendInOneTurn(std::string_view bytes) {
    for (send(bytes); std::exchange(m_listener.turnsOver, 0) > 0; send(bytes)) {
      while (!receive().empty()) {
      }
    }
  }

  // Sends and disconnects before the host handles anything.
  void disconnectAfter(std::string_view bytes) {
    ::send(m_client.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    m_client.reset();
    handle();
  }

  [[nodiscard]] std::size_t queued() const { return m_connection->peer().outbox().queued(); }
  [[nodiscard]] Answering& listener() { return m_listener; }

 private:
  void handle() { m_listener.loop.runAllReady(); }

  Answering m_listener;
  Descriptor m_client;
  std::shared_ptr<Connection> m_connection;
  FrameReader m_reader;
};

// On this type of socket, one recv brings what one send has sent.
class PipelineOfMessages : public testing::Test, protected Pipeline {
 protected:
  PipelineOfMessages() : Pipeline(SOCK_SEQPACKET) {}
};

TEST_F(PipelineOfMessages, RequestsThatArriveTogetherAreAnsweredInOrderInOneSend) {
  send(frames(FrameKind::call, "getTime", 32));
  EXPECT_EQ(receiveTurns(), idsBelow(32));
}

TEST_F(PipelineOfMessages, PartialRequestAtTheEndWaitsForItsRest) {
  const std::string bytes = frames(FrameKind::call, "getTime", 4);
  send(bytes.substr(0, bytes.size() - 5));
  EXPECT_EQ(receiveTurns(), idsBelow(3));
  EXPECT_EQ(receive(), Ids{});
  send(bytes.substr(bytes.size() - 5));
  EXPECT_EQ(receive(), Ids{3});
}

TEST(PipelineWithABadFrame, IsAnsweredUpToThatFrame) {
  const support::LogCapture log(4);
  for (const std::string& bad : {std::string("\0\0\0\4", 4), frames(FrameKind::event, "", 1)}) {
    Pipeline pipeline(SOCK_SEQPACKET);
    const std::string good = frames(FrameKind::call, "getTime", 3);
    pipeline.send(good + bad + good);
    EXPECT_EQ(pipeline.receiveTurns(), idsBelow(3));
    EXPECT_EQ(pipeline.listener().closes, 1);
  }
  EXPECT_NE(log.text().find("dropped: frame of 4 bytes"), std::string::npos) << log.text();
  EXPECT_NE(log.text().find("dropped: not a call"), std::string::npos) << log.text();
}

TEST_F(PipelineOfMessages, AnswersBeyondTheLimitAreSentBeforeTheTurnEnds) {
  listener().answer.assign(3000, 'x');
  sendInOneTurn(frames(FrameKind::call, "getTime", 4));
  EXPECT_EQ(receive(), idsBelow(3));
  EXPECT_EQ(receive(), Ids{3});
}

TEST(PipelineOfASlowReader, IsBoundedAndLosesNoAnswer) {
  constexpr std::uint32_t kRequests = 3000;
  const std::string bytes = frames(FrameKind::call, std::string(1000, 'x'), kRequests);
  Pipeline pipeline(SOCK_STREAM);
  pipeline.listener().answer.assign(1000, 'x');
  std::size_t sent = 0;
  for (std::size_t some = 1; some != 0; sent += some) {
    some = pipeline.send(std::string_view(bytes).substr(sent));
  }
  ASSERT_LT(sent, bytes.size()) << "the host reads no more";
  EXPECT_GE(pipeline.queued(), kMostUnread);
  EXPECT_LT(pipeline.queued(), kMostUnread + Outbox::kMostHeld);
  Ids answered;
  while (answered.size() < kRequests) {
    sent += pipeline.send(std::string_view(bytes).substr(sent));
    const Ids some = pipeline.receive();
    ASSERT_FALSE(some.empty() && pipeline.listener().closes > 0);
    answered.insert(answered.end(), some.begin(), some.end());
  }
  EXPECT_EQ(answered, idsBelow(kRequests));
  EXPECT_EQ(pipeline.queued(), 0U);
}

TEST(PipelineOfAClientThatDisconnects, IsExecutedToItsEnd) {
  constexpr std::uint32_t kRequests = 3 * kFramesInTurn;
  Pipeline pipeline(SOCK_STREAM);
  pipeline.disconnectAfter(frames(FrameKind::call, "getTime", kRequests));
  EXPECT_EQ(pipeline.listener().frames, kRequests);
  EXPECT_EQ(pipeline.listener().closes, 1);
}

}  // namespace
}  // namespace host
