// Many subscribers, callers and attacks for a few seconds; see ./dev load for a minute of each.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "integration/HostTraces.h"
#include "integration/Programs.h"
#include "load/AttackRun.h"
#include "load/DueCalls.h"
#include "load/LoadRun.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"

namespace load {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

TEST(Load, SubscribersAndCallersAreServedDespiteAStuckSubscriber) {
  Size size;
  size.duration = seconds(CLOCK_LOAD_SECONDS);
  size.warmUp = size.duration / 2;
  const LoadFigures figures = loadAHost(size);
  EXPECT_EQ(complaintAbout(figures), "");
  std::printf("%s", toText(figures).c_str());
}

// A machine with other work: the bound is looser than that of ./dev load, and far below the seconds
// that each attack once took. A sanitizer looks for mistakes and not at time: there it is enough
// that each call is answered.
constexpr bool kSanitized = support::kThreadSanitizer || support::kAddressSanitizer;
constexpr std::uint64_t kMostP99Beside = (kSanitized ? 400 : 10) * kMostP99;

TEST(Load, NoAttackDelaysABystanderOrTheShutdown) {
  const AttackFigures figures = attackAHost(seconds(CLOCK_LOAD_SECONDS));
  EXPECT_EQ(complaintAbout(figures, kMostP99Beside), "");
  std::printf("%s", toText(figures).c_str());
}

TEST(Load, ProgramThatIsStoppedLeavesNothing) {
  const support::TemporaryFolder folder;
  integration::Program program(folder.path(), "load", {LOAD, "--seconds", "600"});
  const auto home = integration::hostFolderOf(program.id());
  EXPECT_TRUE(std::filesystem::exists(home));
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait().status, 128 + SIGTERM);
  EXPECT_FALSE(std::filesystem::exists(home));
  EXPECT_FALSE(integration::isInUse(home));
}

// `count` durations of the same length.
Latencies each(std::uint64_t duration, int count = 100) {
  Latencies latencies;
  for (int i = 0; i < count; ++i) latencies.add(microseconds(duration));
  return latencies;
}

// A change of good figures, and a part of the complaint about it; empty: none.
template <class Figures>
struct Change {
  void (*make)(Figures& figures);
  const char* complaint;
};

const Change<LoadFigures> kLoadChanges[] = {
    {[](auto&) {}, ""},
    {[](auto& f) { f.events = 0; }, "not measured: events"},
    {[](auto& f) { f.whileStuck.moves = {}; }, "not measured: a move"},
    {[](auto& f) { f.afterDrop.moves = {}; }, "not measured: a move"},
    {[](auto& f) { f.whileStuck.calls = {}; }, "not measured: a call"},
    {[](auto& f) { f.afterDrop.calls = {}; }, "not measured: a call"},
    {[](auto& f) { f.stuckQueued = 0; }, "dropped at 0 bytes"},
    {[](auto& f) { f.stuckQueued = 1'048'576; }, "dropped at 1048576"},
    {[](auto& f) { f.stuckQueued = 1'179'649; }, "dropped at 1179649"},
    {[](auto& f) { f.whileStuck.moves = each(250'000); }, ""},
    {[](auto& f) { f.whileStuck.moves = each(250'001); }, "p90 of a move is 250001 us"},
    {[](auto& f) { f.whileStuck.calls = each(225'000); }, ""},
    {[](auto& f) { f.whileStuck.calls = each(225'001); }, "p90 of a call is 225001 us"},
    {[](auto& f) { f.leastMemory = f.mostMemory = 0; }, "not measured: the host's memory"},
    {[](auto& f) { f.mostMemory += LoadFigures::kMemoryChange; }, ""},
    {[](auto& f) { f.mostMemory += LoadFigures::kMemoryChange + 1; }, "went from 4000 KiB to"},
};

TEST(LoadFigures, HaveBounds) {
  for (const auto& change : kLoadChanges) {
    LoadFigures figures{
        {each(9'000), each(4'000)}, {each(10'000), each(5'000)}, 1'200, 1'071'248, 4'000, 4'000};
    change.make(figures);
    const std::string complaint = complaintAbout(figures);
    EXPECT_EQ(complaint.empty(), *change.complaint == '\0') << complaint;
    EXPECT_NE(complaint.find(change.complaint), std::string::npos)
        << change.complaint << ", not: " << complaint;
  }
}

const Change<AttackFigures> kAttackChanges[] = {
    {[](auto&) {}, ""},
    {[](auto& f) { f.calls = {}; }, "no bystander was answered"},
    {[](auto& f) { f.calls = each(kMostP99 + 1); }, "p99 of the bystanders' calls is 50001 us"},
    {[](auto& f) { f.connections = 0; }, "no attacker has connected"},
    {[](auto& f) { f.ended = -1; }, "did not end within 2 s"},
    {[](auto& f) { f.effects[1].second = 0; }, "an attack had no effect: calls"},
    {[](auto& f) { f.effects.clear(); }, "the effects of the attacks were not measured"},
};

TEST(AttackFigures, HaveBounds) {
  for (const auto& change : kAttackChanges) {
    AttackFigures figures{each(kMostP99), 50, 2000, {{"sets", 1}, {"calls", 1}}};
    change.make(figures);
    const std::string complaint = complaintAbout(figures, kMostP99);
    EXPECT_EQ(complaint.empty(), *change.complaint == '\0') << complaint;
    EXPECT_NE(complaint.find(change.complaint), std::string::npos)
        << change.complaint << ", not: " << complaint;
  }
}

// On a simulated clock: answers each call after a millisecond, but none during its freeze.
class FreezingLine final : public CallLine {
 public:
  explicit FreezingLine(seconds freeze) : m_thaw(m_freeze + freeze) {}

  Instant now() override { return m_now; }
  void call(std::uint32_t) override {
    const Instant usual = m_now + milliseconds(1);
    m_replies.push_back(usual >= m_freeze && usual < m_thaw ? m_thaw : usual);
  }
  std::optional<std::uint32_t> replied(Instant until) override {
    const bool replied = !m_replies.empty() && m_replies.front() <= until;
    m_now = std::max(m_now, replied ? m_replies.front() : until);
    if (!replied) return std::nullopt;
    m_replies.pop_front();
    return m_replied++;
  }

 private:
  Instant m_now{};
  const Instant m_freeze = m_now + seconds(20);
  const Instant m_thaw;
  std::deque<Instant> m_replies;
  std::uint32_t m_replied = 0;
};

TEST(DueCalls, OneFreezeOfASecondInAMinuteBreaksTheBound) {
  FreezingLine line(seconds(1));
  const Latencies latencies = callWhenDue(line, minutes(1));
  EXPECT_EQ(latencies.count(), 12'000U);
  EXPECT_GT(latencies.quantile(0.99), kMostP99);
  EXPECT_EQ(latencies.quantile(0.5), 1'000U);
}

TEST(DueCalls, WithoutAFreezeTakeAsLongAsTheirReplies) {
  FreezingLine line(seconds(0));
  EXPECT_EQ(callWhenDue(line, minutes(1)).quantile(1), 1'000U);
}

TEST(DueCalls, FailWithoutAnAnswerForTwentySeconds) {
  FreezingLine line(seconds(30));
  EXPECT_THROW(static_cast<void>(callWhenDue(line, minutes(1))), std::runtime_error);
}

TEST(Latencies, QuantileOfAPartIsItsLongestDuration) {
  Latencies latencies;
  EXPECT_EQ(latencies.quantile(0.99), 0U);
  for (int i = 100; i >= 1; --i) latencies.add(microseconds(i));
  latencies.add(each(10'000'000, 1));
  EXPECT_EQ(latencies.count(), 101U);
  EXPECT_EQ(latencies.quantile(0.5), 51U);
  EXPECT_EQ(latencies.quantile(0.99), 100U);
  EXPECT_EQ(latencies.quantile(1), 10'000'000U);
}

}  // namespace
}  // namespace load
