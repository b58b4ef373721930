// How a host starts, ends, is refused, and what it finds again afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/Becomes.h"

namespace integration {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

void writeFile(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::trunc) << text;
}

class HostLife : public ::testing::Test, protected RestartableHost {
 protected:
  // What clockctl prints, errors included, without the last newline.
  std::string told(const Words& more) {
    const Outcome outcome = ctl(more);
    const std::string text = outcome.out + outcome.err;
    return text.substr(0, text.find_last_not_of('\n') + 1);
  }
};

TEST_F(HostLife, FreshHostAnswersFromTheDefaults) {
  start();
  EXPECT_EQ(told({"call", "getTime"}), "getTimeStringReturn=00:00");
  EXPECT_EQ(told({"call", "getDate"}), "getDateStringReturn=16.06.16");
}

TEST_F(HostLife, VariantThreeSpeaksAnotherFormat) {
  start({"--variant", "3"});
  EXPECT_EQ(told({"call", "getDate"}), "getDateStringReturn=06/16/16");
  // An hour ahead: daylight saving by the rule of the United States is on by default.
  EXPECT_EQ(told({"call", "getTime"}), "getTimeStringReturn=01:00am");
}

class Terminated : public HostLife, public ::testing::WithParamInterface<int> {};

// The listener waits in open of the pipe all the while: nobody has reported anything.
TEST_P(Terminated, EndsInOrderWithinASecond) {
  start();
  ASSERT_EQ(told({"get", "date-format"}), "0");
  const Outcome outcome = end(GetParam(), seconds(1));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_FALSE(fs::exists(socket()));
  EXPECT_NE(outcome.err.find("shutting down"), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(BySignal, Terminated, ::testing::Values(SIGINT, SIGTERM));

TEST_F(HostLife, EndsWhileAWatcherIsConnected) {
  start();
  const auto watcher = startCtl({"watch"});
  ASSERT_TRUE(waitFor({"status"}, "clients      2"));
  EXPECT_EQ(end(SIGTERM, seconds(1)).status, 0);
  EXPECT_NE(watcher->wait().status, 128 + SIGKILL);
}

TEST_F(HostLife, SettingsSurviveAKillAndTheStaleSocketIsReplaced) {
  start();
  for (const int format : {1, 2, 1}) {
    ASSERT_EQ(told({"set", "date-format", std::to_string(format)}), "");
    EXPECT_EQ(end(SIGKILL).status, 128 + SIGKILL);
    EXPECT_TRUE(fs::exists(socket()));
    start();
    EXPECT_EQ(told({"get", "date-format"}), std::to_string(format));
  }
}

TEST_F(HostLife, SecondHostOnTheSocketIsRefusedAndTheFirstLivesOn) {
  start();
  expectOneLine(startAnother({"--state", state() / "other"}), 1, {socket().string()});
  EXPECT_EQ(told({"call", "getTime"}), "getTimeStringReturn=00:00");
}

TEST_F(HostLife, SecondHostOnTheStateIsRefusedAndTheFirstLivesOn) {
  start();
  expectOneLine(startAnother({"--socket", state() / "other.sock"}), 1,
                {"state folder", state().string(), "is in use by another host"});
  EXPECT_EQ(told({"set", "date-format", "2"}), "");
}

// Each set the other's new store aside, as one that is damaged.
TEST_F(HostLife, OfTwoHostsThatStartAtOnceOneHasTheState) {
  for (int round = 0; round < 5; ++round) {
    const auto hostAt = [&](const std::string& name) {
      return Program(folder(), name, words({"--socket", folder() / name}));
    };
    Program one = hostAt("one.sock");
    Program two = hostAt("two.sock");
    constexpr std::chrono::milliseconds kShort(10);
    ASSERT_TRUE(support::becomesTrue([&] { return one.ends(kShort) || two.ends(kShort); }))
        << "both live";
    Program& refused = one.ends(std::chrono::milliseconds(0)) ? one : two;
    Program& living = &refused == &one ? two : one;
    expectOneLine(refused.wait(), 1, {"state folder", "is in use by another host"});
    living.signal(SIGTERM);
    EXPECT_EQ(living.wait().status, 0);
    EXPECT_FALSE(fs::exists(state() / "settings.db.damaged-1"));
    EXPECT_FALSE(fs::exists(state() / "security.db.damaged-1"));
    fs::remove_all(state());
  }
}

TEST_F(HostLife, SetsFailWhenTheStateFolderIsRemoved) {
  start();
  ASSERT_EQ(told({"set", "date-format", "1"}), "");
  fs::remove_all(state());
  EXPECT_EQ(told({"set", "date-format", "2"}),
            "clockctl: \"date-format\" could not be stored; `clockctl log` tells why");
  EXPECT_TRUE(program().says("its file was removed or replaced")) << program().err();
  EXPECT_EQ(told({"get", "date-format"}), "1");
}

TEST_F(HostLife, StartsWhateverIsInThePlaceOfTheScript) {
  fs::create_directories(state());
  ASSERT_EQ(mkfifo((state() / "setupTZ.sh").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo((state() / ".setupTZ.sh.new").c_str(), 0600), 0);
  start();
  EXPECT_TRUE(program().says("setupTZ.sh is no regular file; remove it")) << program().err();
  fs::remove(state() / "setupTZ.sh");
  EXPECT_EQ(told({"set", "sntp-tz-offset", "5"}), "");
  ASSERT_EQ(ctl({"clock", "advance", "1s"}).status, 0);
  EXPECT_TRUE(fs::is_regular_file(state() / "setupTZ.sh"));
}

// It takes connections still: a call without a reply is not done because nothing was said against
// it.
TEST_F(HostLife, StoppedHostHasNotDoneAOneWayCall) {
  start();
  program().signal(SIGSTOP);
  expectOneLine(ctl({"--timeout", "0.05", "call", "setTimeInt", "setTime=60"}), 1,
                {"no reply within 0.05 s; the host is busy"});
  program().signal(SIGCONT);
  EXPECT_EQ(told({"call", "setTimeInt", "setTime=60"}), "");
}

TEST_F(HostLife, StartsAtTheGivenInstantAndFindsItAgain) {
  start({"--at", "2026-03-08T06:59:50Z"});
  EXPECT_EQ(told({"get", "time"}), "2026-03-08T06:59:50+00:00");
  EXPECT_EQ(end(SIGKILL).status, 128 + SIGKILL);
  start();
  EXPECT_EQ(told({"get", "time"}), "2026-03-08T06:59:50+00:00");
}

TEST_F(HostLife, RefusesAManagementCallThatThrowsAndLives) {
  start();
  const Outcome refused = ctl({"set", "simple-time", "7"});
  EXPECT_EQ(refused.status, 1) << refused.err;
  EXPECT_EQ(told({"set", "simple-time", "07:30"}), "");
  EXPECT_EQ(told({"call", "getTime"}), "getTimeStringReturn=07:30");
  EXPECT_TRUE(program().says("set of \"simple-time\" refused: the agent threw"));
}

// As in `clockhost 2>&1 | less`, where nobody pages on.
TEST_F(HostLife, LivesAndEndsBehindAStandardErrorThatNobodyReads) {
  const fs::path pipe = folder() / "unread";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  const std::string page(4096, '.');
  while (write(reader, page.data(), page.size()) > 0) {
  }
  Words shell = {"/bin/sh", "-c", "exec \"$@\" 2>\"$0\"", pipe};
  for (const std::string& word : words({"--log-level", "6"})) shell.push_back(word);
  launch(shell);
  ASSERT_TRUE(answers());
  EXPECT_EQ(told({"call", "getTime"}), "getTimeStringReturn=00:00");
  EXPECT_EQ(end(SIGTERM, seconds(2)).status, 0);
  close(reader);
}

TEST_F(HostLife, DamagedStoreIsSetAsideAndDefaultsAreServed) {
  writeFile(state() / "settings.db", "this is no database, whatever its name says");
  start();
  EXPECT_EQ(told({"get", "date-format"}), "0");
  EXPECT_TRUE(fs::exists(state() / "settings.db.damaged-1"));
  EXPECT_TRUE(program().says("settings.db.damaged-1")) << program().err();
}

TEST_F(HostLife, StoreOfANewerVersionIsRefused) {
  start();
  ASSERT_EQ(end(SIGTERM).status, 0);
  std::fstream file(state() / "settings.db", std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(63);  // the last byte of the user version in the header of the file
  file.put(9);
  file.close();
  expectOneLine(startAnother(), 1, {"settings.db", "version 9", "newer"});
}

TEST_F(HostLife, StateFolderThatIsAFileIsRefused) {
  writeFile(state(), "not a folder");
  expectOneLine(startAnother(), 1, {state().string()});
  EXPECT_FALSE(fs::exists(socket()));
}

TEST_F(HostLife, MissingPlugInIsRefused) {
  expectOneLine(startAnother({"--plugin", "/no/such/plugin.so"}), 1,
                {"/no/such/plugin.so", "createClockService"});
}

TEST_F(HostLife, PlugInThatIsNoLibraryIsRefused) {
  writeFile(state() / "plugin.so", "not a library");
  expectOneLine(startAnother({"--plugin", state() / "plugin.so"}), 1,
                {"plugin.so", "createClockService"});
}

TEST_F(HostLife, PlugInWithoutAFactoryOrWithANullOneIsRefused) {
  const fs::path plugins = fs::read_symlink("/proc/self/exe").parent_path();
  expectOneLine(startAnother({"--plugin", plugins / "libtest_plugin_without_proxy.so"}), 1,
                {"libtest_plugin_without_proxy.so", "createClockServiceObserverProxy", "absent"});
  expectOneLine(startAnother({"--plugin", plugins / "libtest_plugin_null_service.so"}), 1,
                {"libtest_plugin_null_service.so", "createClockService", "returned null"});
}

TEST_F(HostLife, WrongWordIsAUsageError) {
  expectOneLine(startAnother({"--variant", "three"}), 2, {"--variant", "--help"});
}

}  // namespace
}  // namespace integration
