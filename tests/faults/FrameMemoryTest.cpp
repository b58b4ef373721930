// Memory runs out at the n-th allocation while the host handles a frame, for n = 1, 2, 3 ... until
// the host needs fewer.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>

#include "faults/Caller.h"
#include "faults/PlanFile.h"
#include "integration/SetLedger.h"
#include "remote/FrameSocket.h"
#include "remote/MessagePackCodec.h"

namespace faults {
namespace {

using host::Frame;
using host::FrameKind;

constexpr std::chrono::seconds kAnswerLimit(20);
constexpr std::uint32_t kFrame = 2;   // ids of the client's frames
constexpr std::uint32_t kBehind = 3;  // its reply comes after that of kFrame, if that has one
constexpr std::uint32_t kBefore = 4;  // of the frames ahead
constexpr int kFramesOfTurns = 150;   // more than the loop handles in two turns
constexpr const char* kKey = "ntp-secret";

std::string secret(std::uint64_t nth) {
  return "a secret that is too long for a short string " + std::to_string(nth);
}

std::string call(const char* method, const std::string& text = "") {
  Method message(method, Method::call);
  if (!text.empty()) message.addStringParameter("getTimeUTCStrString", text, Parameter::in);
  std::stringstream stream;
  host::MessagePackCodec().encode(message, stream);
  return stream.str();
}

enum Conditions : unsigned {
  usual = 0,
  newcomer = 1,      // memory runs out before the client connects
  reserveSpent = 2,  // the host's memory reserve is used up
  sets = 4,          // the frame is a set
  inTurns = 8        // many equal frames come first, so that the loop needs several turns
};

// What a client sends while memory runs out.
struct Situation {
  const char* name;
  FrameKind kind;
  std::string payload;
  unsigned conditions = usual;
  // From one failing allocation to the next. Each failure may log several lines, and all of them
  // have to stay below the log's limit for one place in the code.
  std::uint64_t step = 1;
};

const Situation kSituations[] = {
    {"call", FrameKind::call, call("getTime")},
    {"call, reserve spent", FrameKind::call, call("getTime"), reserveSpent},
    {"newcomer", FrameKind::call, call("getTime"), newcomer},
    {"newcomer, reserve spent", FrameKind::call, call("getTime"), newcomer | reserveSpent},
    {"observing", FrameKind::call, call("observeTimeEvents")},
    {"observing, reserve spent", FrameKind::call, call("observeTimeEvents"), reserveSpent},
    {"long call", FrameKind::call, call("getTimeUTCStr", std::string(900'000, 'x'))},
    {"long call, reserve spent", FrameKind::call, call("getTimeUTCStr", std::string(900'000, 'x')),
     reserveSpent},
    {"get", FrameKind::controlRequest, R"({"verb":"get","key":"ntp-secret"})"},
    {"set", FrameKind::controlRequest, R"({"verb":"set","key":"ntp-secret","value":"#"})", sets},
    {"keys", FrameKind::controlRequest, R"({"verb":"keys"})"},
    {"status", FrameKind::controlRequest, R"({"verb":"status"})", usual, 13},
    {"turns of calls", FrameKind::call, call("getTime"), inTurns, 97},
    {"turns of calls, reserve spent", FrameKind::call, call("getTime"), inTurns | reserveSpent, 97},
    {"turns of requests", FrameKind::controlRequest, R"({"verb":"get","key":"ntp-secret"})",
     inTurns, 97},
    {"event", FrameKind::controlRequest, R"({"verb":"clock","action":"advance","seconds":3600})"},
};

void PrintTo(const Situation& situation, std::ostream* out) {
  *out << situation.name;
}

std::string situationName(const ::testing::TestParamInfo<Situation>& info) {
  std::string name = info.param.name;
  std::erase(name, ',');
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

class MemoryRunsOut : public ::testing::TestWithParam<Situation> {
 protected:
  MemoryRunsOut() {
    ledger.begins(kKey, "");
    host.launch();
    if (!host.answers()) ADD_FAILURE() << host.program().err();
    subscriber.emplace(host);
    // The start ends with the check of the security log, which this waits for.
    EXPECT_TRUE(subscriber->control(R"({"verb":"security-log"})"));
    EXPECT_TRUE(subscriber->call("observeTimeEvents"));
  }

  void TearDown() override {
    if (HasFailure()) std::printf("the log:\n%s", host.program().err().c_str());
  }

  static bool has(Conditions condition) { return (GetParam().conditions & condition) != 0; }
  static int reserve() { return has(reserveSpent) ? kReserveSpent : kReserveThere; }

  static std::string payload(std::uint64_t nth) {
    std::string text = GetParam().payload;
    if (has(sets)) text.replace(text.find('#'), 1, secret(nth));
    return text;
  }

  static bool isCall() { return GetParam().kind == FrameKind::call; }

  // Sends a frame that is always answered, and waits for the reply.
  static void exchangeOne(host::FrameSocket& client) {
    const std::string any = isCall() ? call("getTime") : R"({"verb":"clock","action":"show"})";
    client.send({GetParam().kind, 1, any});
    Frame frame;
    EXPECT_TRUE(client.receive(frame, std::chrono::steady_clock::now() + kAnswerLimit));
  }

  // In one send, so that they arrive together.
  static void sendTurns(const host::FrameSocket& client) {
    std::string frames;
    for (int i = 0; i < kFramesOfTurns; ++i) {
      frames += host::encodeFrame({GetParam().kind, kBefore, GetParam().payload});
    }
    const auto sent = ::send(client.descriptor(), frames.data(), frames.size(), MSG_NOSIGNAL);
    EXPECT_EQ(sent, static_cast<ssize_t>(frames.size()));
  }

  // The reply to the frame; nothing when the host dropped the reply or the client.
  std::optional<std::string> sendWithout(std::uint64_t nth) try {
    const bool unknown = has(newcomer);
    if (unknown) plan.arm(Call::memory, reserve(), nth);
    host::FrameSocket client(isCall() ? host.socket() : host.controlSocket());
    if (!unknown) exchangeOne(client);
    if (!unknown) plan.arm(Call::memory, reserve(), nth);
    if (has(inTurns)) sendTurns(client);
    client.send({GetParam().kind, kFrame, payload(nth)});
    if (isCall()) client.send({FrameKind::call, kBehind, call("getTime")});
    Frame frame;
    const auto deadline = std::chrono::steady_clock::now() + kAnswerLimit;
    while (client.receive(frame, deadline)) {
      if (frame.id == kFrame) return std::string(frame.payload);
      if (frame.id == kBehind) return std::nullopt;
    }
    ADD_FAILURE() << "the client is left waiting";
    return std::nullopt;
  } catch (const host::HostGone&) {
    return std::nullopt;
  }

  // The host goes on, has logged the failure, and has kept what it acknowledged.
  void expectAllIsWell() {
    Caller caller(host);
    EXPECT_TRUE(caller.call("getTime"));
    EXPECT_EQ(caller.leftWaiting(), 0);
    EXPECT_TRUE(host.program().says("out of memory", seenLog));
    seenLog = host.program().err().size();
    if (has(sets)) expectTheSetIsKept(caller);
  }

  void expectTheSetIsKept(Caller& caller) {
    const std::string value = caller.get(kKey).value_or("(refused)");
    EXPECT_TRUE(ledger.allows(kKey, value)) << value << "; " << ledger.allowed(kKey);
    ledger.found(kKey, value);
  }

  void expectAnEvent() {
    while (subscriber->nextEvent(std::chrono::milliseconds(0))) continue;
    Caller caller(host);
    if (!subscriber->connected()) {
      EXPECT_TRUE(subscriber->call("observeTimeEvents"));
    }
    EXPECT_TRUE(caller.control(R"({"verb":"clock","action":"advance","seconds":3600})"));
    EXPECT_TRUE(subscriber->nextEvent(kAnswerLimit));
  }

  integration::RestartableHost host{CLOCK_FAILING_HOST, {"--log-level", "3"}};
  PlanFile plan{host.folder() / "plan"};
  std::optional<Caller> subscriber;
  integration::SetLedger ledger;
  std::size_t seenLog = 0;
};

TEST_P(MemoryRunsOut, AndTheHostGoesOn) {
  std::uint64_t nth = 1;
  int count = 0;
  bool failed = true;
  for (; failed && !HasFailure(); nth += GetParam().step) {
    SCOPED_TRACE(std::string(GetParam().name) + ": allocation " + std::to_string(nth));
    const auto set = has(sets) ? ledger.asked(kKey, secret(nth)) : 0;
    const auto reply = sendWithout(nth);
    failed = plan.disarm();
    if (has(sets) && reply) ledger.answered(kKey, set, *reply == R"({"ok":true})");
    if (failed) ++count;
    if (failed) expectAllIsWell();
    // The host may still be handling a JSON request after its reply, and that takes memory.
    if (!failed || !has(reserveSpent)) expectAnEvent();
  }
  std::printf("memory, %s: ran out at %d allocations\n", GetParam().name, count);
  EXPECT_GT(count, 0);
  EXPECT_EQ(host.end(SIGTERM).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Each, MemoryRunsOut, ::testing::ValuesIn(kSituations), situationName);

}  // namespace
}  // namespace faults
