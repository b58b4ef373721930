// However many frames one client sends, the others get their turn.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "host/remote/RawSocket.h"
#include "host/remote/ServerUnderTest.h"
#include "remote/ClientLimits.h"

namespace host {
namespace {

// Calls that the device counts.
std::string countedCalls(std::size_t count) {
  return encodeFrame({FrameKind::hello, 0, "json"}) +
         frames(FrameKind::call, R"({"name":"oneWay"})", count);
}

// A client that sends one request after the other, while others keep the server busy.
class Bystander {
 public:
  explicit Bystander(std::size_t others) {
    for (std::size_t i = 0; i < others; ++i) m_others.emplace_back(m_server.socket);
    EXPECT_TRUE(m_server.becomes([&] { return m_server.clients() == others + 1; }));
  }

  [[nodiscard]] std::vector<RawSocket>& others() { return m_others; }
  [[nodiscard]] ServerUnderTest& server() { return m_server; }

  // How much `work` the device has done before each request of the bystander, after the others
  // `begin` together.
  std::vector<int> workBeforeEachTurn(const std::function<void()>& begin,
                                      int (FakeDevice::*work)() const) {
    constexpr std::size_t kTurns = 8;
    std::vector<int> counts;
    m_onRequest = [&] {
      counts.push_back((m_server.device.*work)());
      if (counts.size() < kTurns) ask();
    };
    m_server.onLoop([&] {
      begin();
      ask();
    });
    EXPECT_TRUE(m_server.becomes([&] { return counts.size() == kTurns; }));
    return counts;
  }

 private:
  void ask() { m_socket.send(frames(FrameKind::controlRequest, "{}", 1)); }

  std::function<void()> m_onRequest;
  ServerUnderTest m_server{[this](const ControlRequest&) { m_onRequest(); }};
  RawSocket m_socket{m_server.controlSocket};
  std::vector<RawSocket> m_others;
};

std::vector<int> callsBeforeEachTurn(std::size_t others) {
  Bystander bystander(others);
  const auto begin = [&] {
    for (RawSocket& client : bystander.others()) client.send(countedCalls(3000));
  };
  return bystander.workBeforeEachTurn(begin, &FakeDevice::oneWayCalls);
}

TEST(Turns, BystanderWaitsForOneTurnOfAPipeline) {
  EXPECT_LE(callsBeforeEachTurn(1).front(), static_cast<int>(2 * kFramesInTurn));
}

void expectNoMoreThanThreeTurnsBetween(const std::vector<int>& counts) {
  for (std::size_t turn = 1; turn < counts.size(); ++turn) {
    EXPECT_LE(counts[turn] - counts[turn - 1], static_cast<int>(3 * kFramesInTurn)) << turn;
  }
}

TEST(Turns, BystanderWaitsForOneTurnOfManyPipelines) {
  expectNoMoreThanThreeTurnsBetween(callsBeforeEachTurn(8));
}

TEST(Turns, BystanderWaitsForAFewCallsOfEachOfManyBursts) {
  constexpr std::size_t kOthers = 50;
  Bystander bystander(kOthers);
  const auto begin = [&] {
    for (RawSocket& client : bystander.others()) client.send(countedCalls(kFramesInTurn - 1));
  };
  const auto counts = bystander.workBeforeEachTurn(begin, &FakeDevice::oneWayCalls);
  EXPECT_LE(counts.front(), static_cast<int>(8 * kOthers + 3 * kFramesInTurn));
}

TEST(Turns, BystanderWaitsForOneTurnWhileManyObserversAreUnobserved) {
  constexpr std::size_t kObservers = 100;
  Bystander bystander(kObservers);
  ServerUnderTest& server = bystander.server();
  const std::string observe = encodeFrame({FrameKind::hello, 0, "json"}) +
                              frames(FrameKind::call, R"({"name":"observeTimeEvents"})", 8);
  for (RawSocket& client : bystander.others()) client.send(observe);
  ASSERT_TRUE(server.becomes([&] { return server.device.observers() == 8 * kObservers; }));
  std::vector<int> counts = bystander.workBeforeEachTurn([&] { bystander.others().clear(); },
                                                         &FakeDevice::unobserveCalls);
  counts.insert(counts.begin(), 0);
  expectNoMoreThanThreeTurnsBetween(counts);
  EXPECT_TRUE(server.becomes([&] { return server.device.observers() == 0; }));
  EXPECT_TRUE(server.becomes([] { return FakeProxy::living == 0; }));
}

// No later frame makes the server go on.
TEST(Turns, PipelineOfASilentClientIsCarriedOutToItsEnd) {
  ServerUnderTest server;
  RawSocket client(server.socket);
  client.send(countedCalls(5000));
  EXPECT_TRUE(server.becomes([&] { return server.device.oneWayCalls() == 5000; }));
}

}  // namespace
}  // namespace host
