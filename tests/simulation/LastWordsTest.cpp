// What is left to be read when a life takes the whole program with it.

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "platform/LogBook.h"
#include "simulation/Child.h"
#include "simulation/Life.h"
#include "simulation/SimulationFolder.h"
#include "simulation/Thrown.h"

namespace simulation {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

// What happens to a telephone that is sent garbage.
class Fatal : public host::LogSink {
 public:
  explicit Fatal(void (*fate)()) : m_fate(fate) {}
  void write(const host::LogEntry& entry) override {
    if (entry.text.find("Failed to decode") != std::string::npos) m_fate();
  }

 private:
  void (*m_fate)();
};

const Steps kSteps{{Act::observe, {}, {"Ann"}, {}}, {Act::garbage, {}, {"trash", "peer one"}, {}}};

// A child lives with this fate; its folder is the first line that it writes.
End endWith(void (*fate)(), const std::function<void()>& doing) {
  return endOf(STDERR_FILENO, [&] {
    const SimulationFolder folder;
    std::cerr << std::filesystem::current_path().string() << std::endl;
    host::LogBook::instance().addSink(std::make_shared<Fatal>(fate));
    doing();
  });
}

void liveGivenSteps() {
  static_cast<void>(live(kSteps));
}

void hang() {
  if (alarm(0) == 0) _exit(0);  // nobody would have come
  raise(SIGALRM);
}

TEST(SimulationLastWords, ACrashTellsTheSeedAndTheStep) {
  const auto end = endWith(std::abort, [] { static_cast<void>(live(7, 5000)); });
  EXPECT_EQ(end.status, 128 + SIGABRT);
  EXPECT_THAT(end.text,
              ContainsRegex("the program aborted in seed 7, step [0-9]+: peer [^\n]*\n$"));
}

TEST(SimulationLastWords, ACrashInGivenStepsTellsTheStep) {
  const auto end = endWith(std::abort, liveGivenSteps);
  EXPECT_THAT(end.text, EndsWith("simulation: the program aborted in a life of given steps, step "
                                 "2: peer one sends garbage \"trash\"\n"));
}

TEST(SimulationLastWords, AStepThatDoesNotEndIsEnded) {
  const auto end = endWith(hang, liveGivenSteps);
  EXPECT_EQ(end.status, 128 + SIGALRM);
  EXPECT_THAT(end.text, HasSubstr("the step did not end in a life of given steps, step 2: "));
}

TEST(SimulationLastWords, WhoeverEndsTheProgramReadsWhereItWas) {
  const auto end = endWith([] { raise(SIGTERM); }, liveGivenSteps);
  EXPECT_EQ(end.status, 128 + SIGTERM);
  EXPECT_THAT(end.text, HasSubstr("the program was ended in a life of given steps, step 2: "));
}

TEST(SimulationLastWords, NoFolderIsLeftBehind) {
  const auto end = endWith(std::abort, [] { static_cast<void>(live(7, 5000)); });
  const std::string folder = end.text.substr(0, end.text.find('\n'));
  EXPECT_THAT(folder, HasSubstr("clock-life-"));
  EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST(SimulationLastWords, NothingIsWatchedBetweenAndAfterLives) {
  const auto between = endWith(std::abort, [] {
    static_cast<void>(live(Steps{}));
    if (alarm(0) == 0) raise(SIGTERM);
  });
  EXPECT_THAT(between.text, EndsWith("simulation: the program was ended, between two lives\n"));
  const auto after = endOf(STDERR_FILENO, [] {
    { const SimulationFolder folder; }
    raise(SIGTERM);
  });
  EXPECT_EQ(after.status, 128 + SIGTERM);
  EXPECT_THAT(after.text, IsEmpty());
}

// The stack is used up: the words need one of their own.
volatile int g_depth = 0;
int sink(int depth) {
  volatile char room[4096] = {};
  g_depth = depth;
  return depth < 0 ? room[0] : sink(depth + 1) + room[1];
}

TEST(SimulationLastWords, ATooDeepRecursionTellsTheStepToo) {
  const auto end = endWith([] { sink(0); }, liveGivenSteps);
  EXPECT_THAT(end.text, HasSubstr("memory was missing in a life of given steps, step 2: "));
}

TEST(SimulationLastWords, AnExceptionIsADifference) {
  const SimulationFolder folder;
  const Life life = live(Steps{{Act::observe, {}, {"Ann"}, {}}, {Act::service, {1}, {"none"}, {}}});
  ASSERT_TRUE(life.difference);
  EXPECT_EQ(life.difference->step, 2U);
  ASSERT_FALSE(life.difference->actual.empty());
  EXPECT_THAT(life.difference->actual.back(), AllOf(HasSubstr("threw: "), HasSubstr("at")));
}

TEST(SimulationLastWords, WhateverIsThrownHasWords) {
  EXPECT_EQ(thrownBy([] { throw std::runtime_error("lost"); }), "lost");
  EXPECT_EQ(thrownBy([] { throw 1; }), "no exception of the library's");
  EXPECT_EQ(thrownBy([] {}), std::nullopt);
}

}  // namespace
}  // namespace simulation
