#include "telephone/ChildProgram.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "base/Error.h"

namespace panel {
namespace {

using std::chrono::steady_clock;

ChildProgram shell(const std::string& script) {
  return {"/bin/sh", {"-c", script}};
}

ChildProgram::Deadline inTime() {
  return steady_clock::now() + std::chrono::seconds(30);
}

TEST(ChildProgram, HasBothOutputsAndTheExitStatus) {
  ChildProgram child = shell("echo out; echo err >&2; exit 3");
  EXPECT_EQ(child.finish(inTime()), 3);
  EXPECT_EQ(child.output(), "out\nerr\n");
}

TEST(ChildProgram, FinishesOnce) {
  ChildProgram child = shell("exit 3");
  ChildProgram other = shell("exit 4");
  EXPECT_EQ(child.finish(inTime()), 3);
  EXPECT_EQ(child.finish(inTime()), 3);
  EXPECT_EQ(other.finish(inTime()), 4);
}

TEST(ChildProgram, IsReadUpToAText) {
  ChildProgram child = shell("echo ready; exec sleep 1000");
  EXPECT_TRUE(child.readTo("ready\n", inTime()));
  EXPECT_EQ(child.output(), "ready\n");
}

TEST(ChildProgram, ThatEndsBeforeTheTextIsReadToItsEnd) {
  ChildProgram child = shell("echo no host");
  EXPECT_TRUE(child.readTo("ready\n", inTime()));
  EXPECT_EQ(child.output(), "no host\n");
}

TEST(ChildProgram, ThatIsSilentIsNotReadBeyondTheDeadline) {
  ChildProgram child = shell("exec sleep 1000");
  EXPECT_FALSE(child.readTo("ready\n", steady_clock::now()));
}

TEST(ChildProgram, IsKilledAfterTheDeadline) {
  ChildProgram child = shell("exec sleep 1000");
  EXPECT_EQ(child.finish(steady_clock::now()), 128 + SIGKILL);
}

TEST(ChildProgram, IsKilledWithWhatItStartedAtTheEnd) {
  std::stop_source ending;
  ChildProgram reading = shell("sleep 1000 & echo ready; sleep 1000");
  ASSERT_TRUE(reading.readTo("ready\n", inTime()));
  ChildProgram ended = shell("sleep 1000 & echo ready; sleep 1000");
  ASSERT_TRUE(ended.readTo("ready\n", inTime()));
  ending.request_stop();
  EXPECT_TRUE(reading.readTo("never\n", inTime(), ending.get_token()));
  EXPECT_EQ(ended.finish(inTime(), ending.get_token()), 128 + SIGKILL);
}

TEST(ChildProgram, CanBeInterrupted) {
  ChildProgram child = shell("trap 'exit 5' INT; echo ready; while :; do sleep 0.01; done");
  ASSERT_TRUE(child.readTo("ready\n", inTime()));
  child.interrupt();
  EXPECT_EQ(child.finish(inTime()), 5);
}

TEST(ChildProgram, KeepsTheBeginningOfALongOutput) {
  ChildProgram child = shell("yes | head -c 1000000");
  EXPECT_EQ(child.finish(inTime()), 0);
  EXPECT_GE(child.output().size(), 65536U);
  EXPECT_LT(child.output().size(), 65536U + 4096U);
}

TEST(ChildProgram, ThatDoesNotExistIsNamed) {
  try {
    const ChildProgram child("/no/such/program", {});
    FAIL();
  } catch (const host::Error& error) {
    EXPECT_EQ(std::string(error.what()),
              "cannot start \"/no/such/program\": No such file or directory");
  }
}

}  // namespace
}  // namespace panel
