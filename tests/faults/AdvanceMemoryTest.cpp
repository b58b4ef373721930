// Memory runs out permanently at the n-th allocation while the clock advances.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>

#include "faults/Caller.h"
#include "faults/PlanFile.h"
#include "remote/FrameSocket.h"
#include "support/Becomes.h"

namespace faults {
namespace {

using host::Frame;
using host::FrameKind;

constexpr std::chrono::seconds kPatience(10);

// Takes far longer than a test, so that memory runs out before it ends.
constexpr const char* kCentury = R"({"verb":"clock","action":"advance","seconds":3155760000})";
constexpr const char* kHour = R"({"verb":"clock","action":"advance","seconds":3600})";

class MemoryRunsOutOnTheWay : public ::testing::TestWithParam<std::uint64_t> {
 protected:
  MemoryRunsOutOnTheWay() {
    host.launch();
    if (!host.answers()) ADD_FAILURE() << host.program().err();
    client.emplace(host.controlSocket());
  }

  std::optional<std::string> time() {
    const auto reply = caller.call("getTime");
    std::string text;
    if (!reply || !reply->getStringParameter("getTimeStringReturn", text, Parameter::out))
      return {};
    return text;
  }

  // The time changes after the first slice of the move; by then the request has been freed.
  void advanceForACentury() {
    const auto before = time();
    client->send({FrameKind::controlRequest, 1, kCentury});
    support::becomesTrue([&] { return time() != before; }, kPatience);
  }

  // The reply to the client; nothing when the host is gone or has dropped it.
  std::optional<std::string> answer() try {
    Frame frame;
    if (client->receive(frame, std::chrono::steady_clock::now() + kPatience)) {
      return std::string(frame.payload);
    }
    return "the client is left waiting";
  } catch (const host::HostGone&) {
    return std::nullopt;
  }

  integration::RestartableHost host{CLOCK_FAILING_HOST, {"--log-level", "3"}};
  PlanFile plan{host.folder() / "plan"};
  Caller caller{host};
  std::optional<host::FrameSocket> client;
};

TEST_P(MemoryRunsOutOnTheWay, AndTheMoveIsGivenUp) {
  advanceForACentury();
  plan.arm(Call::memory, kReserveSpent, GetParam());
  EXPECT_EQ(answer(), R"({"ok":false,"error":"the host could not answer"})");
  EXPECT_TRUE(plan.disarm());
  EXPECT_TRUE(time()) << "the host serves others";
  const std::string next = caller.control(kHour).value_or("no answer");
  EXPECT_EQ(next.find(R"({"ok":true)"), next.find('{')) << next << ": the next move is made";
  EXPECT_TRUE(host.program().says("out of memory", 0));
  EXPECT_EQ(host.end(SIGTERM).status, 0);
  if (HasFailure()) std::printf("the log:\n%s", host.program().err().c_str());
}

INSTANTIATE_TEST_SUITE_P(At, MemoryRunsOutOnTheWay,
                         ::testing::Values(1, 2, 3, 4, 5, 6, 8, 11, 16, 23, 32, 45, 64));

}  // namespace
}  // namespace faults
