#include "ntpclient/Exchange.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <future>
#include <tuple>
#include <vector>

#include "host/ntpclient/FakeSntpServer.h"

namespace host::ntp {
namespace {

using namespace std::chrono_literals;
using Kind = Outcome::Kind;

// One request to a fake server, on another thread.
class Asked {
 public:
  Asked(const FakeSntpServer& server, std::chrono::milliseconds limit, const char* address,
        int family)
      : m_outcome(std::async(std::launch::async, [=, this, port = server.port()] {
          return ask(address, family, port.c_str(), limit, m_watch,
                     [this](Verdict verdict) { m_refused.push_back(verdict); });
        })) {}
  explicit Asked(const FakeSntpServer& server, std::chrono::milliseconds limit = kLong)
      : Asked(server, limit, "127.0.0.1", AF_INET) {}

  Outcome outcome() { return m_outcome.get(); }
  [[nodiscard]] const std::vector<Verdict>& refused() const {
    return m_refused;
  }  // after outcome()

 private:
  const ParentWatch m_watch;
  std::vector<Verdict> m_refused;
  std::future<Outcome> m_outcome;
};

bool isAboutNow(const Outcome& outcome, std::uint32_t time) {
  const auto difference = outcome.time - std::chrono::seconds(time);
  return outcome.kind == Kind::time && difference >= 0s && difference < 10s &&
         outcome.at <= std::chrono::steady_clock::now();
}

TEST(Exchange, TakesTheTimeOfAGoodAnswer) {
  FakeSntpServer server;
  Asked asked(server);
  const Bytes request = server.receive();
  EXPECT_EQ(request.size(), kPacketSize);
  server.answer(answerTo(nonceOf(request), kTime));
  EXPECT_TRUE(isAboutNow(asked.outcome(), kTime));
  EXPECT_TRUE(asked.refused().empty());
}

TEST(Exchange, AsksOverIpv6) {
  FakeSntpServer server(AF_INET6);
  Asked asked(server, kLong, "::1", AF_INET6);
  server.serve(kTime);
  EXPECT_TRUE(isAboutNow(asked.outcome(), kTime));
}

TEST(Exchange, IgnoresBadAnswersUntilAGoodOne) {
  FakeSntpServer server;
  Asked asked(server);
  const Bytes request = server.receive();
  const std::uint64_t nonce = nonceOf(request);
  server.answerFromElsewhere(answerTo(nonce, kTime + 1000));
  server.answer({});
  server.answer({1, 2, 3});
  server.answer(Bytes(48, 0xff));
  server.answer(answerTo(nonce + 1, kTime + 1000));
  Bytes noStratum = answerTo(nonce, kTime + 1000);
  noStratum[1] = 0;
  server.answer(noStratum);
  for (int i = 0; i < 10; ++i) server.answer(answerTo(0, kTime + 1000));
  server.answer(answerTo(nonce, kTime));
  EXPECT_TRUE(isAboutNow(asked.outcome(), kTime));
  EXPECT_EQ(asked.refused(),
            (std::vector{Verdict::wrongSender, Verdict::tooShort, Verdict::wrongMode,
                         Verdict::wrongOrigin, Verdict::noStratum}))
      << "each reason once";
}

TEST(Exchange, EndsWithAKissOfDeath) {
  for (const auto& [code, kind, verdict] : {std::tuple{"DENY", Kind::denied, Verdict::denied},
                                            {"RATE", Kind::rateExceeded, Verdict::rateExceeded}}) {
    FakeSntpServer server;
    Asked asked(server);
    server.answer(kissOfDeath(nonceOf(server.receive()), code));
    EXPECT_EQ(asked.outcome().kind, kind);
    EXPECT_EQ(asked.refused(), std::vector{verdict});
  }
}

// As under a flood, there is always something to read. Ends the exchange at the second wait after
// the limit.
class Flooded : public ParentWatch {
 public:
  [[nodiscard]] Event wait(Deadline deadline, int /*descriptor*/) const override {
    ++m_waits;
    if (std::chrono::steady_clock::now() < deadline) return Event::ready;
    return ++m_late == 1 ? Event::ready : Event::parentGone;
  }
  [[nodiscard]] int waits() const { return m_waits; }

 private:
  mutable int m_waits = 0;
  mutable int m_late = 0;
};

TEST(Exchange, EndsAtItsLimitUnderAFloodOfNonsense) {
  FakeSntpServer server;
  const Flooded watch;
  std::vector<Verdict> refused;
  auto outcome = std::async(std::launch::async, [&] {
    return ask("127.0.0.1", AF_INET, server.port().c_str(), 200ms, watch,
               [&](Verdict verdict) { refused.push_back(verdict); });
  });
  static_cast<void>(server.receive());
  while (outcome.wait_for(0s) != std::future_status::ready) server.answer({1});
  EXPECT_EQ(outcome.get().kind, Kind::nothing);
  EXPECT_EQ(refused, std::vector{Verdict::tooShort}) << "once";
  EXPECT_GT(watch.waits(), 1);
}

// Records the flags of the exchange's socket, and ends the exchange.
class SocketFlags : public ParentWatch {
 public:
  [[nodiscard]] Event wait(Deadline /*deadline*/, int descriptor) const override {
    m_ofDescriptor = ::fcntl(descriptor, F_GETFD);
    m_ofSocket = ::fcntl(descriptor, F_GETFL);
    return Event::parentGone;
  }
  [[nodiscard]] bool closeOnExec() const { return m_ofDescriptor == FD_CLOEXEC; }
  [[nodiscard]] bool nonBlocking() const {
    return m_ofSocket > 0 && (m_ofSocket & O_NONBLOCK) != 0;
  }

 private:
  mutable int m_ofDescriptor = -1;
  mutable int m_ofSocket = -1;
};

TEST(Exchange, ItsSocketIsCloseOnExecAndDoesNotBlock) {
  const FakeSntpServer server;
  const SocketFlags flags;
  const Outcome outcome =
      ask("127.0.0.1", AF_INET, server.port().c_str(), kLong, flags, [](Verdict) {});
  EXPECT_EQ(outcome.kind, Kind::parentGone);
  EXPECT_TRUE(flags.closeOnExec());
  EXPECT_TRUE(flags.nonBlocking());
}

TEST(Exchange, EndsAtItsLimitAndHasANewNonceEachTime) {
  FakeSntpServer server;
  Asked one(server, 20ms);
  const std::uint64_t nonce = nonceOf(server.receive());
  EXPECT_EQ(one.outcome().kind, Kind::nothing);
  Asked other(server, 20ms);
  EXPECT_NE(nonceOf(server.receive()), nonce);
  EXPECT_EQ(other.outcome().kind, Kind::nothing);
}

TEST(Exchange, IsNothingWithoutARouteToTheServer) {
  const ParentWatch watch;
  const auto ignore = [](Verdict) {};
  EXPECT_EQ(ask("nonsense", AF_INET, "123", kLong, watch, ignore).kind, Kind::nothing);
  EXPECT_EQ(ask("255.255.255.255", AF_INET, "123", kLong, watch, ignore).kind, Kind::nothing);
}

}  // namespace
}  // namespace host::ntp
