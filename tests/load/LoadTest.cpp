// Many subscribers and callers at once, in short; see ./dev load for a minute of it.
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
#include "load/Figures.h"
#include "load/Latencies.h"
#include "load/LoadRun.h"
#include "support/TemporaryFolder.h"

namespace load {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

TEST(Load, EverybodyGetsWhatIsDue) {
  Size size;
  size.duration = seconds(CLOCK_LOAD_SECONDS);
  size.warmUp = size.duration / 2;
  LoadRun everybody(size);
  EXPECT_TRUE(everybody.run()) << everybody.fault();
  std::printf("%s", toText(everybody.figures()).c_str());
}

// A machine with other work: the bound is looser than that of ./dev load, and far below the seconds
// that each of the attacks took.
constexpr std::uint64_t kMostP99Beside = 10 * kMostP99;

TEST(Load, NoClientMakesABystanderWaitOrHoldsUpTheEnd) {
  const AttackFigures figures = attackAHost(seconds(CLOCK_LOAD_SECONDS));
  EXPECT_EQ(complaintAbout(figures, kMostP99Beside), "");
  std::printf("%s", toText(figures).c_str());
}

TEST(AttackFigures, AreAsTheyAreDueOrThereIsAComplaint) {
  const AttackFigures good{1000, 100, kMostP99, 60'000, 50, 2000, {{"sets", 1}, {"calls", 1}}};
  const auto complaint = [&](auto change) {
    AttackFigures figures = good;
    change(figures);
    return complaintAbout(figures, kMostP99);
  };
  EXPECT_EQ(complaintAbout(good, kMostP99), "");
  EXPECT_NE(complaint([](auto& f) { f.calls = 0; }), "");
  EXPECT_NE(complaint([](auto& f) { f.connections = 0; }), "");
  EXPECT_NE(complaint([](auto& f) { f.ended = -1; }), "");
  EXPECT_NE(complaint([](auto& f) { ++f.callP99; }), "");
  EXPECT_EQ(complaint([](auto& f) { f.effects[1].count = 0; }), "an attack had no effect: calls");
  EXPECT_NE(complaint([](auto& f) { f.effects.clear(); }), "");
}

// Answers each call after a millisecond, but nothing during its freeze, on a clock of its own.
class FreezingLine final : public Line {
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
  EXPECT_LE(latencies.quantile(0.5), 1'002U);
}

TEST(DueCalls, WithoutAFreezeTakeNoLongerThanTheirReplies) {
  FreezingLine line(seconds(0));
  EXPECT_LE(callWhenDue(line, minutes(1)).quantile(1 - 1e-9), 1'002U);
}

TEST(DueCalls, ThatAreNotAnsweredForTwentySecondsAreAFailure) {
  FreezingLine line(seconds(30));
  EXPECT_THROW(static_cast<void>(callWhenDue(line, minutes(1))), std::runtime_error);
}

TEST(Load, ProgramThatIsStoppedLeavesNothing) {
  const support::TemporaryFolder folder;
  integration::Program program(folder.path(), "load", {LOAD, "--seconds", "600"});
  const auto home = integration::folderOfTheHostOf(program.id());
  EXPECT_TRUE(std::filesystem::exists(home));
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait().status, 128 + SIGTERM);
  EXPECT_FALSE(std::filesystem::exists(home));
  EXPECT_FALSE(integration::livesSomebodyIn(home));
}

TEST(Latencies, QuantileIsWhatSuchAPartDidNotExceed) {
  Latencies latencies;
  EXPECT_EQ(latencies.quantile(0.99), 0U);
  for (int i = 1; i <= 100; ++i) latencies.add(microseconds(i));
  EXPECT_EQ(latencies.count(), 100U);
  EXPECT_EQ(latencies.quantile(0.5), 51U);
  EXPECT_EQ(latencies.quantile(0.99), 100U);
  latencies.add(seconds(10));
  const std::uint64_t tenSeconds = latencies.quantile(1 - 1e-9);
  EXPECT_GE(tenSeconds, 10'000'000U);
  EXPECT_LE(tenSeconds, 10'020'000U);
}

TEST(Latencies, ASlotIsNeverWiderThanOnePartIn512) {
  for (std::uint64_t duration = 1; duration < 3'600'000'000; duration += 1 + duration / 7) {
    Latencies latencies;
    latencies.add(microseconds(duration));
    EXPECT_GE(latencies.quantile(0.5), duration);
    EXPECT_LE(latencies.quantile(0.5), duration + duration / 512);
  }
}

// One row: a change of figures that are as they are due, and what is said of it.
struct Change {
  const char* name;
  void (*make)(Figures& figures);
  const char* complaint;  // holds it; empty: none
};

const Change kChanges[] = {
    {"none", [](Figures&) {}, ""},
    {"no event", [](Figures& f) { f.events = 0; }, "no event was heard"},
    {"no move beside", [](Figures& f) { f.beside.moves = 0; }, "the clock was not moved beside"},
    {"no move after", [](Figures& f) { f.after.moves = 0; }, "the clock was not moved after"},
    {"no call beside", [](Figures& f) { f.beside.calls = 0; }, "no call was answered beside"},
    {"no call after", [](Figures& f) { f.after.calls = 0; }, "no call was answered after"},
    {"never dropped", [](Figures& f) { f.stuckQueued = 0; }, "dropped at 0 bytes"},
    {"dropped early", [](Figures& f) { f.stuckQueued = 1'048'576; }, "dropped at 1048576"},
    {"dropped late", [](Figures& f) { f.stuckQueued = 1'179'649; }, "dropped at 1179649"},
    {"heard in time", [](Figures& f) { f.beside.heardP90 = 250'000; }, ""},
    {"heard late", [](Figures& f) { f.beside.heardP90 = 250'001; }, "p90 of a move 250001 us"},
    {"called in time", [](Figures& f) { f.beside.callP90 = 225'000; }, ""},
    {"called late", [](Figures& f) { f.beside.callP90 = 225'001; }, "p90 of a call 225001 us"},
    {"no memory seen", [](Figures& f) { f.leastMemory = f.mostMemory = 0; }, "not looked at"},
    {"level", [](Figures& f) { f.mostMemory += Figures::kLevel; }, ""},
    {"a leak", [](Figures& f) { f.mostMemory += Figures::kLevel + 1; }, "went from 4000 KiB to"},
};

TEST(Figures, AreAsTheyAreDueOrThereIsAComplaint) {
  for (const Change& change : kChanges) {
    Figures figures;
    figures.beside = {64, 9'000, 12'000, 30'000, 700, 4'000, 6'000};
    figures.after = {700, 10'000, 11'000, 150'000, 800, 5'000, 6'000};
    figures.events = 1'200;
    figures.stuckQueued = 1'071'248;
    figures.leastMemory = figures.mostMemory = 4'000;
    change.make(figures);
    const std::string complaint = complaintAbout(figures);
    EXPECT_EQ(complaint.empty(), *change.complaint == '\0') << change.name << ": " << complaint;
    EXPECT_NE(complaint.find(change.complaint), std::string::npos)
        << change.name << ": " << complaint;
  }
}

TEST(Figures, OfNothingAreWrong) {
  EXPECT_NE(complaintAbout(Figures()), "");
}

}  // namespace
}  // namespace load
