// clockctl record: a recorded session is a scenario that passes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "integration/OneLine.h"
#include "integration/RandomUser.h"
#include "integration/RestartableHost.h"
#include "support/FileContent.h"

namespace integration {
namespace {

using std::chrono::seconds;

class Record : public ::testing::Test {
 protected:
  void start(const Words& more = {}) {
    Words words = {"record", m_file.string()};
    words.insert(words.end(), more.begin(), more.end());
    m_recorder = m_host.startCtl(words);
    ASSERT_TRUE(m_recorder->says("ready\n"));
  }

  Outcome end() {
    m_recorder->signal(SIGINT);
    return m_recorder->wait();
  }

  Outcome replay() const {
    return Program(m_host.folder(), "replay",
                   {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--scenario", m_file.string()})
        .wait();
  }

  void expectReplay() const {
    const Outcome outcome = replay();
    EXPECT_EQ(outcome.status, 0) << outcome.err << support::contentOf(m_file);
  }

  RunningHost m_host;
  const std::filesystem::path m_file = m_host.folder() / "recorded.scenario";
  std::unique_ptr<Program> m_recorder;
};

TEST_F(Record, TwoHundredMixedStepsReplayGreen) {
  RandomUser user(m_host, 7);                // goes to an NTP restart, of which the replay has none
  for (int i = 0; i < 20; ++i) user.step();  // no new telephone
  user.control({{"verb", "clock"}, {"action", "advance"}, {"seconds", 1}});
  start();
  for (int i = 0; i < 200; ++i) user.step();
  const Outcome outcome = end();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(outcome.out.starts_with("recorded 200 steps and ")) << outcome.out;
  expectReplay();
}

// At a person's pace: each command is a process.
TEST_F(Record, ARunningClockReplaysGreen) {
  ASSERT_EQ(m_host.ctl({"clock", "speed", "1"}).status, 0);
  start();
  for (const Words& words : {Words{"call", "getTimeInts"},
                             {"set", "simple-time", "07:30"},
                             {"set", "time", "2026-05-08T06:59:50Z"},
                             {"get", "time"},
                             {"set", "sntp-tz-offset", "-5"},
                             {"clock", "advance", "2h"},
                             {"call", "getDate"},
                             {"clock", "to", "midnight"},
                             {"clock", "speed", "1"},
                             {"call", "getTimeInts"}}) {
    ASSERT_EQ(m_host.ctl(words).status, 0);
  }
  EXPECT_EQ(end().status, 0);
  expectReplay();
}

class RecordAtSpeed : public Record, public ::testing::WithParamInterface<const char*> {};

TEST_P(RecordAtSpeed, ReplaysGreen) {
  ASSERT_EQ(m_host.ctl({"clock", "speed", GetParam()}).status, 0);
  start();
  const char* const zones[] = {"-5", "5.5", "0", "-9.5", "5.75", "1"};
  for (int i = 0; i < 6; ++i) {
    const Words setTime = {"call", "setTime", "setTimeHours=" + std::to_string(5 * i % 24),
                           "setTimeMinutes=" + std::to_string(13 * i % 60), "setTimeSeconds=29"};
    ASSERT_EQ(m_host.ctl(setTime).status, 0);
    ASSERT_EQ(m_host.ctl({"set", "sntp-tz-offset", zones[i]}).status, 0);
    ASSERT_EQ(m_host.ctl({"call", "getTimeInts"}).status, 0);
    ASSERT_EQ(m_host.ctl({"call", "getDate"}).status, 0);
  }
  EXPECT_EQ(end().status, 0);
  expectReplay();
}

class RecordToMax : public Record, public ::testing::WithParamInterface<bool> {};

// The host drops an observer that stands still meanwhile.
TEST_P(RecordToMax, EndsWithTheReason) {
  ASSERT_EQ(m_host.ctl({"clock", "speed", "1"}).status, 0);
  start();
  ASSERT_EQ(m_host.ctl({"call", "getTime"}).status, 0);
  if (GetParam()) m_recorder->signal(SIGSTOP);
  ASSERT_EQ(m_host.ctl({"clock", "speed", "max"}).status, 0);
  ASSERT_TRUE(!GetParam() || m_host.program().says("does not read its messages"));
  m_recorder->signal(SIGCONT);
  const Outcome outcome = m_recorder->wait();
  expectOneLine({outcome.status, "", outcome.err.substr(6)}, 1,
                {"the clock got the speed max", "holds what was done before"});
  expectReplay();
}

INSTANTIATE_TEST_SUITE_P(StandingStill, RecordToMax, ::testing::Bool());

// Whatever the threads of the host do at the same time: what does not replay is a comment.
TEST_F(Record, SeveralClientsOfARunningClockReplayGreen) {
  ASSERT_EQ(m_host.ctl({"clock", "speed", "60"}).status, 0);
  start();
  std::vector<std::thread> clients;
  for (unsigned seed = 1; seed <= 3; ++seed) {
    clients.emplace_back([this, seed] {
      RandomUser user(m_host, seed);
      for (int i = 0; i < 60; ++i) user.step();
    });
  }
  for (std::thread& client : clients) client.join();
  static_cast<void>(end());  // 1 if steps at the same time were cut, or frames were lost
  expectReplay();
}

INSTANTIATE_TEST_SUITE_P(Speeds, RecordAtSpeed, ::testing::Values("1", "60", "3600"));

TEST_F(Record, TheTimeSetByHandBeforeIsReplayed) {
  ASSERT_EQ(m_host.ctl({"set", "simple-time", "07:30"}).status, 0);
  ASSERT_EQ(m_host.ctl({"clock", "advance", "1s"}).status, 0);
  ASSERT_EQ(m_host.ctl({"clock", "jump", "2026-03-08T06:59:50Z"}).status, 0);
  start();
  EXPECT_EQ(m_host.ctl({"call", "getTimeInts"}).out.substr(0, 25), "getTimeIntsHoursReturn=7\n");
  EXPECT_EQ(end().status, 0);
  expectReplay();
}

TEST_F(Record, RefusesToBeginBeforeChangesAreApplied) {
  ASSERT_EQ(m_host.ctl({"set", "sntp-tz-offset", "5"}).status, 0);
  expectOneLine(m_host.ctl({"record", m_file.string()}), 1,
                {"not applied yet", "`clock advance 1s`"});
  EXPECT_FALSE(std::filesystem::exists(m_file));
}

// Such as a panel, which asks all the time.
TEST_F(Record, DoesNotMindAClientThatReads) {
  const std::jthread reader([this](const std::stop_token& end) {
    RandomUser user(m_host, 1);
    while (!end.stop_requested()) user.control({{"verb", "status"}});
  });
  start();
  ASSERT_EQ(m_host.ctl({"get", "sntp-tz-offset"}).status, 0);
  EXPECT_EQ(end().out, "recorded 1 steps and 0 events\n");
}

TEST_F(Record, AHostThatEndsLeavesACompleteFile) {
  start();
  ASSERT_EQ(m_host.ctl({"call", "getTime"}).status, 0);
  static_cast<void>(m_host.end(SIGTERM));
  Outcome outcome = m_recorder->wait();
  ASSERT_TRUE(outcome.err.starts_with("ready\n"));
  outcome.err.erase(0, 6);
  expectOneLine(outcome, 1, {"the host disconnected", "holds what was done before"});
  expectReplay();
}

TEST_F(Record, ASignalAfterTheHostDiedLosesNothing) {
  start();
  m_recorder->signal(SIGSTOP);
  ASSERT_EQ(m_host.ctl({"set", "date-format", "2"}).status, 0);
  static_cast<void>(m_host.end(SIGKILL));
  m_recorder->signal(SIGINT);
  m_recorder->signal(SIGCONT);
  EXPECT_EQ(m_recorder->wait().status, 1);
  EXPECT_NE(support::contentOf(m_file).find("\nset date-format 2"), std::string::npos);
}

TEST_F(Record, EndsAfterSoManySteps) {
  start({"--count", "2"});
  for (int i = 0; i < 3; ++i) ASSERT_EQ(m_host.ctl({"call", "getTime"}).status, 0);
  EXPECT_EQ(m_recorder->wait().out, "recorded 2 steps and 0 events\n");
}

TEST_F(Record, EndsAfterSoLong) {
  start({"--for", "1s"});
  EXPECT_EQ(m_recorder->wait().out, "recorded 0 steps and 0 events\n");
}

TEST_F(Record, PrintsItsSummaryAsJson) {
  start({"--json", "--for", "1s"});
  EXPECT_EQ(m_recorder->wait().out, "{\"steps\":0,\"events\":0}\n");
}

TEST_F(Record, WaitsForTheHostAsLongAsTheOptionSays) {
  m_host.program().signal(SIGSTOP);
  const auto begun = std::chrono::steady_clock::now();
  expectOneLine(m_host.ctl({"record", m_file.string(), "--timeout", "0.1"}), 1, {"no reply"});
  EXPECT_LT(std::chrono::steady_clock::now() - begun, seconds(5)) << "the default";
  m_host.program().signal(SIGCONT);
}

TEST_F(Record, AChangedFileIsNeverLost) {
  start();
  EXPECT_EQ(end().status, 0);
  struct stat found {};
  ASSERT_EQ(::stat(m_file.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777U, 0600U) << "it may hold the shared secret";
  expectOneLine(m_host.ctl({"record", m_file.string()}), 1,
                {"exists; name another file, or write --overwrite"});
  ASSERT_EQ(::chmod(m_file.c_str(), 0644), 0);
  start({"--overwrite"});
  EXPECT_EQ(end().status, 0);
  ASSERT_EQ(::stat(m_file.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(Record, ReportsAFullDiskAtOnce) {
  expectOneLine(m_host.ctl({"record", "/dev/full", "--overwrite"}), 1,
                {"\"/dev/full\" cannot be written: No space left on device"});
}

}  // namespace
}  // namespace integration
