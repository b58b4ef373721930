// The host's NTP client as a process: what it inherits, what it may do, and that it sets the clock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "base/Descriptor.h"
#include "host/ntpclient/FakeSntpServer.h"
#include "integration/RestartableHost.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

fs::path processFolder(const std::string& id) {
  return fs::path("/proc") / id;
}

// The kind of a file that a descriptor in /proc/PID/fd refers to.
std::string kindOf(const std::string& file) {
  if (file.find("pidfd") != std::string::npos) return "pidfd";
  if (!file.starts_with("socket:")) return "file";
  const std::string number = file.substr(8, file.size() - 9);
  return support::contentOf("/proc/net/udp").find(" " + number + " ") != std::string::npos
             ? "UDP"
             : "socket";
}

std::string fieldOf(const fs::path& process, const std::string& name) {
  std::ifstream status(process / "status");
  for (std::string word; status >> word;) {
    if (word == name + ":" && status >> word) return word;
  }
  return "none";
}

// A telephone whose client has asked the time server and waits for its answer.
class TelephoneWithAClient : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(::fcntl(inherited.get(), F_SETFD, 0), 0);
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    ::setenv("NTPCLIENT_PORT", server.port().c_str(), 1);
    running.emplace(Words{"--network", "up"});
    ASSERT_EQ(running->ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
    request = server.receive();
  }

  [[nodiscard]] fs::path hostProcess() {
    return processFolder(std::to_string(running->program().id()));
  }
  [[nodiscard]] fs::path clientProcess() {
    std::istringstream status(running->ctl({"status"}).out);
    for (std::string word; status >> word;) {
      if (word == "process" && status >> word) return processFolder(word);
    }
    return "/no/client";
  }

  const host::Descriptor inherited{
      ::open("/dev/null", O_RDONLY | O_CLOEXEC)};  // the host inherits it
  host::ntp::FakeSntpServer server;
  std::optional<RunningHost> running;
  host::ntp::Bytes request;
};

TEST_F(TelephoneWithAClient, HasItsClockSetByTheClient) {
  server.answer(host::ntp::answerTo(host::ntp::nonceOf(request), host::ntp::kTime));
  EXPECT_TRUE(running->waitFor({"clock"}, "2026-05-28T20:26:40Z")) << running->ctl({"clock"}).out;
  EXPECT_TRUE(running->waitFor({"call", "isTimeSourceSntp"}, "true")) << running->program().err();
}

TEST_F(TelephoneWithAClient, GivesTheClientItsChannelAndNoPrivileges) {
  ASSERT_TRUE(fs::exists(hostProcess() / "fd" / std::to_string(inherited.get())))
      << "the host did not inherit the test's descriptor";
  std::map<int, std::string> descriptors;
  for (const auto& entry : fs::directory_iterator(clientProcess() / "fd")) {
    descriptors[std::stoi(entry.path().filename())] = kindOf(fs::read_symlink(entry.path()));
  }
  // 3 is the channel; 4 and 5 are the client's own, to watch the host and to ask the server.
  EXPECT_EQ(descriptors,
            (std::map<int, std::string>{
                {0, "file"}, {1, "file"}, {2, "file"}, {3, "socket"}, {4, "pidfd"}, {5, "UDP"}}));
  EXPECT_EQ(fieldOf(hostProcess(), "NoNewPrivs"), "1");
  EXPECT_EQ(fieldOf(clientProcess(), "NoNewPrivs"), "1");
#ifndef CLOCK_WITHOUT_FILTER
  constexpr const char* kFiltered = "2";
  EXPECT_EQ(fieldOf(clientProcess(), "Seccomp"), kFiltered);
#endif
}

TEST_F(TelephoneWithAClient, TellsWhyTheClientHasEnded) {
  server.answer(host::ntp::kissOfDeath(host::ntp::nonceOf(request), "DENY"));
  Program& host = running->program();
  EXPECT_TRUE(host.says("note     ntpclient: answer ignored: the server denies service\n"))
      << host.err();
  EXPECT_TRUE(host.says("warning  clockhost: \"/sbin/ntpclient\" ended with status 1\n"))
      << host.err();
  EXPECT_TRUE(running->waitFor({"status"}, "answer ignored: the server denies service"));
}

TEST(TelephoneWithAClientOfOnesOwn, LogsWhatEachClientSaysUpToItsLastWord) {
  const support::TemporaryFolder folder;
  const fs::path client = folder / "own";
  std::ofstream(client) << "#!/bin/sh\n"
                           "trap 'echo \"<3>$server: last words\" >&2; exit' TERM\n"
                           "server=$9\n"
                           "echo $server: started\n"
                           "sleep 1000 &\n"
                           "wait\n";
  fs::permissions(client, fs::perms::owner_all);
  RunningHost running({"--network", "up", "--program", "/sbin/ntpclient=" + client.string()});
  Program& host = running.program();
  for (const std::string server : {"127.0.0.1", "127.0.0.2"}) {
    ASSERT_EQ(running.ctl({"set", "sntp-addr", server}).status, 0);
    EXPECT_TRUE(host.says("note     ntpclient: " + server + ": started\n")) << host.err();
  }
  EXPECT_TRUE(running.waitFor({"status"}, "127.0.0.2: started"));
  EXPECT_TRUE(host.says("error    ntpclient: 127.0.0.1: last words\n")) << host.err();
  const Outcome outcome = running.end(SIGTERM);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.err.ends_with("error    ntpclient: 127.0.0.2: last words\n")) << outcome.err;
}

TEST(TelephoneWithAClientOfOnesOwn, AnswersWhileTheClientWritesWithoutEnd) {
  const support::TemporaryFolder folder;
  const fs::path client = folder / "own";
  std::ofstream(client) << "#!/bin/sh\nwhile :; do echo flood $((n += 1)); done\n";
  fs::permissions(client, fs::perms::owner_all);
  RunningHost running({"--network", "up", "--program", "/sbin/ntpclient=" + client.string()});
  ASSERT_EQ(running.ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
  ASSERT_TRUE(running.program().says("flood 50"));
  EXPECT_EQ(running.ctl({"call", "getTime"}).status, 0);
  EXPECT_NE(running.ctl({"log"}).out.find("listening at"), std::string::npos);
  const Outcome outcome = running.end(SIGTERM);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find(" lines suppressed of ntpclient: one program may write 100 lines"),
            std::string::npos);
}

}  // namespace
}  // namespace integration
