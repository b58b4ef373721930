// How a host starts and ends, what keeps it from starting, and what survives a restart.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/Becomes.h"
#include "support/FileContent.h"
#include "support/ManagerSocket.h"

namespace integration {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

class HostLife : public ::testing::Test, protected RestartableHost {};

class Terminated : public HostLife, public ::testing::WithParamInterface<int> {};

// The thread that listens for time reports waits in open of its pipe all the while.
TEST_P(Terminated, EndsInOrderWithinASecond) {
  start();
  const auto watcher = startCtl({"watch"});
  ASSERT_TRUE(watcher->says("ready\n"));
  const Outcome outcome = end(GetParam(), seconds(1));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_NE(outcome.err.find("shutting down"), std::string::npos) << outcome.err;
  EXPECT_FALSE(fs::exists(socket()));
  EXPECT_FALSE(fs::exists(controlSocket()));
  EXPECT_NE(watcher->wait().status, 128 + SIGKILL);
}

INSTANTIATE_TEST_SUITE_P(BySignal, Terminated, ::testing::Values(SIGINT, SIGTERM));

// A program that reads the descriptor may use the host at once.
TEST_F(HostLife, WritesANewlineWhenItAnswers) {
  const fs::path pipe = folder() / "ready";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  launch(inShell("3>\"" + pipe.string() + "\"", words({"--ready-fd", "3"})));
  EXPECT_EQ(support::contentOf(pipe), "\n") << "the end of the file comes when the host closes it";
  EXPECT_EQ(ctl({"call", "getTime", "--timeout", "30"}).out, "getTimeStringReturn=00:00\n");
}

TEST_F(HostLife, ClosesTheDescriptorWithoutANewlineIfItDoesNotStart) {
  const fs::path pipe = folder() / "ready";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  launch(inShell("3>\"" + pipe.string() + "\"",
                 words({"--ready-fd", "3", "--plugin", "/no/such/plugin.so"})));
  EXPECT_EQ(support::contentOf(pipe), "");
  EXPECT_EQ(program().wait().status, 1);
}

// The log of a newer program is found out only when the host already answers.
TEST_F(HostLife, ClosesTheDescriptorWithoutANewlineIfTheSecurityLogCannotBeOpened) {
  const fs::path pipe = folder() / "ready";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  start();
  ASSERT_EQ(ctl({"security-log"}).status, 0);
  ASSERT_EQ(end(SIGTERM).status, 0);
  constexpr std::streamoff kVersionEnd = 63;  // in SQLite's file header, big-endian
  std::fstream(state() / "security.db", std::ios::in | std::ios::out).seekp(kVersionEnd).put(99);
  launch(inShell("3>\"" + pipe.string() + "\"", words({"--ready-fd", "3"})));
  EXPECT_EQ(support::contentOf(pipe), "");
  EXPECT_EQ(program().wait().status, 1);
}

TEST_F(HostLife, DoesNotListenWithAFolderInPlaceOfTheSecurityLog) {
  fs::create_directories(state() / "security.db");
  launch();
  EXPECT_EQ(program().wait().status, 1);
  EXPECT_EQ(program().err().find("listening"), std::string::npos) << program().err();
}

TEST_F(HostLife, NotifiesItsServiceManager) {
  const support::ManagerSocket manager(folder() / "manager");
  Words command = {"/usr/bin/env", "NOTIFY_SOCKET=" + (folder() / "manager").string()};
  const Words host = words();
  command.insert(command.end(), host.begin(), host.end());
  launch(command);
  EXPECT_EQ(manager.notice(seconds(30)), "READY=1");
  EXPECT_EQ(ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
  EXPECT_EQ(end(SIGTERM).status, 0);
  EXPECT_EQ(manager.notice(seconds(30)), "STOPPING=1");
}

TEST_F(HostLife, SurvivesTheEndOfItsTerminalAndUserSignals) {
  start();
  for (const int ignored : {SIGHUP, SIGUSR1, SIGUSR2}) program().signal(ignored);
  EXPECT_EQ(ctl({"get", "date-format"}).out, "0\n");
  EXPECT_FALSE(program().ends(std::chrono::milliseconds(0)));
}

// As logrotate does.
TEST_F(HostLife, OpensItsLogFileAgainAfterSighup) {
  const fs::path log = folder() / "log";
  start({"--log-file", log});
  ASSERT_TRUE(support::becomesTrue(
      [&] { return support::contentOf(log).find("listening at") != std::string::npos; }));
  fs::rename(log, folder() / "log.1");
  program().signal(SIGHUP);
  ASSERT_TRUE(support::becomesTrue(
      [&] { return support::contentOf(log).find("reopened") != std::string::npos; }));
  const Outcome outcome = end(SIGTERM);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(support::contentOf(log).find("shutting down"), std::string::npos);
}

// The first host holds the state folder, for which the second one waits.
TEST_F(HostLife, EndsInOrderWhenItIsStoppedDuringItsStart) {
  start();
  const fs::path second = folder() / "second.sock";
  Program other(folder(), "second", words({"--socket", second}));
  ASSERT_TRUE(support::becomesTrue([&] { return fs::exists(second); }));
  other.signal(SIGTERM);
  EXPECT_NE(other.wait().status, 128 + SIGTERM);
  EXPECT_FALSE(fs::exists(second));
}

// An odd time is worth a warning when it was saved, not when it was asked for.
TEST_F(HostLife, KeepsItsSettingsAndItsTimeOverAKill) {
  start({"--at", "1999-01-01T00:00:00Z"});
  ASSERT_EQ(ctl({"set", "date-format", "1"}).status, 0);
  ASSERT_TRUE(program().says("listening at"));
  const Outcome killed = end(SIGKILL);
  EXPECT_EQ(killed.err.find("the saved time"), std::string::npos) << killed.err;
  EXPECT_TRUE(fs::exists(socket())) << "the next host replaces it";
  start();
  EXPECT_EQ(ctl({"get", "date-format"}).out, "1\n");
  EXPECT_EQ(ctl({"get", "time"}).out, "1999-01-01T00:00:00+00:00\n");
  EXPECT_TRUE(program().says("the saved time \"1999-01-01T00:00:00+00:00\" is not between"));
}

TEST_F(HostLife, RefusesASecondHostAndGoesOn) {
  start();
  const std::string state = folder() / "second";
  const std::string socket = folder() / "second.sock";
  expectOneLine(startAnother({"--state", state}), 1, {this->socket().string()});
  expectOneLine(startAnother({"--socket", socket}), 1,
                {"state folder", this->state().string(), "is in use by another host"});
  expectOneLine(startAnother({"--state", state, "--socket", socket}), 1,
                {"ntpclient is in use by another host"});
  EXPECT_EQ(ctl({"set", "date-format", "2"}).status, 0);
}

// Two hosts that open the same new store would each take it for damaged and set it aside.
TEST_F(HostLife, OfTwoHostsThatStartAtOnceOneHasTheState) {
  for (int round = 0; round < 5; ++round) {
    const auto hostAt = [&](const std::string& name) {
      return Program(folder(), name, words({"--socket", folder() / name}));
    };
    Program one = hostAt("one.sock");
    Program two = hostAt("two.sock");
    constexpr std::chrono::milliseconds kShort(10);
    ASSERT_TRUE(support::becomesTrue([&] { return one.ends(kShort) || two.ends(kShort); }))
        << "both run";
    Program& refused = one.ends(std::chrono::milliseconds(0)) ? one : two;
    Program& running = &refused == &one ? two : one;
    expectOneLine(refused.wait(), 1, {"state folder", "is in use by another host"});
    running.signal(SIGTERM);
    EXPECT_EQ(running.wait().status, 0);
    EXPECT_FALSE(fs::exists(state() / "settings.db.damaged-1"));
    EXPECT_FALSE(fs::exists(state() / "security.db.damaged-1"));
    fs::remove_all(state());
  }
}

TEST_F(HostLife, TakesReportsAgainAfterItsPipeWasDeleted) {
  start({"--log-level", "5"});
  ASSERT_TRUE(support::becomesTrue([&] { return report(1); }));
  ASSERT_TRUE(program().says("Time change message received"));
  fs::rename(folder() / "root/tmp", folder() / "moved");
  ASSERT_TRUE(program().says("was deleted or replaced; it is recreated"));
  const std::size_t seen = program().err().size();
  EXPECT_TRUE(support::becomesTrue([&] {
    return report(1) &&
           program().err().find("Time change message received", seen) != std::string::npos;
  })) << program().err();
}

TEST_F(HostLife, HasItsPipeInItsStateFolderWithoutADeviceRoot) {
  launch({CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--state", state(), "--socket", socket()});
  ASSERT_TRUE(answers());
  EXPECT_TRUE(fs::is_fifo(state() / "device/tmp/votk/ipc/ntpclient"));
}

// As in `clockhost 2>&1 | less` while the user does not scroll.
TEST_F(HostLife, RunsAndEndsWhileItsStandardErrorIsNotRead) {
  const fs::path pipe = folder() / "unread";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  const std::string page(4096, '.');
  while (write(reader, page.data(), page.size()) > 0) continue;
  launch(inShell("2>\"" + pipe.string() + "\"", words({"--log-level", "6"})));
  ASSERT_TRUE(answers());
  EXPECT_EQ(ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
  EXPECT_EQ(end(SIGTERM, seconds(2)).status, 0);
  close(reader);
}

std::string modeOf(const fs::path& file) {
  struct stat found {};
  if (::lstat(file.c_str(), &found) != 0 || !S_ISSOCK(found.st_mode)) return "no socket";
  return std::to_string(found.st_mode >> 6U & 7U) + std::to_string(found.st_mode >> 3U & 7U) +
         std::to_string(found.st_mode & 7U);
}

TEST_F(HostLife, OpensItsSocketsAsTheOptionsSay) {
  const group* const own = ::getgrgid(::getegid());  // NOLINT(concurrency-mt-unsafe)
  ASSERT_NE(own, nullptr) << "this user's group has no name";
  const std::string control = folder() / "elsewhere";
  start({"--control-socket", control, "--socket-group", own->gr_name});
  EXPECT_EQ(modeOf(socket()), "660");
  EXPECT_EQ(modeOf(control), "600");
  EXPECT_EQ(modeOf(controlSocket()), "no socket");
  EXPECT_EQ(ctl({"--control-socket", control, "get", "date-format"}).out, "0\n");
  EXPECT_EQ(ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
  start();
  EXPECT_EQ(modeOf(socket()), "600");
}

// It opens that after its first replies.
TEST_F(HostLife, EndsWhenItsSecurityLogCannotBeOpened) {
  fs::create_directories(state() / "security.db");
  launch();
  const Outcome outcome = program().wait();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.ends_with("clockhost: \"" + (state() / "security.db").string() +
                                    "\" is not a regular file; remove it\n"))
      << outcome.err;
}

TEST_F(HostLife, SaysInOneLineWhyItDoesNotStart) {
  fs::create_directories(state());
  const std::string length(100'000, 'x');
  const struct {
    Words options;
    int status;
    Words parts;
  } rows[] = {
      {{"--plugin", "/no/such\nplugin.so"}, 1, {"/no/such\\nplugin.so", "createClockService"}},
      {{"--state", "/dev/null/no\nfolder"}, 1, {"no\\nfolder"}},
      {{"--log-file", "/dev/null"}, 1, {"log file is not a regular file: /dev/null"}},
      {{"--log-file", "/proc/none/log"}, 1, {"log file cannot be opened: /proc/none/log: "}},
      {{"--speed", "1", "--clock", "system"},
       1,
       {"--clock system sets this machine's clock and needs the privilege to"}},
      {{"--variant", "three"}, 2, {"--variant: \"three\" is not a whole number"}},
      {{"--at", "a\nb\xff"}, 2, {"\"a\\nb\\xFF\" is not an instant"}},
      {{"--wro\nng"}, 2, {"--wro\\nng"}},
      {{"--ready-fd", "999"}, 2, {"--ready-fd: 999 is not open for writing; open it for the host"}},
      {{"--mac", length}, 2, {"`clockhost --help` lists the options"}},
  };
  for (const auto& [options, status, parts] : rows) {
    expectOneLine(startAnother(options), status, parts);
    EXPECT_FALSE(fs::exists(socket()));
  }
}

}  // namespace
}  // namespace integration
