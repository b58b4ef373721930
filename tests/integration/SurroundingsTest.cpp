// What the programs find around them: descriptors, signals, limits, privileges, other programs, and
// files that are not what they should be.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/Sanitizers.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

// The program in a shell's hands: its descriptors as the shell's words say.
Words inShell(const std::string& redirections, const Words& words) {
  Words all = {"/bin/sh", "-c", "exec \"$@\" " + redirections, "sh"};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

std::string descriptorOf(const Program& program, int number) {
  std::error_code error;
  const fs::path link = "/proc/" + std::to_string(program.id()) + "/fd/" + std::to_string(number);
  return fs::read_symlink(link, error).string();
}

void expectNullDescriptors(const Program& program) {
  for (const int standard : {0, 1, 2}) EXPECT_EQ(descriptorOf(program, standard), "/dev/null");
}

TEST(ClosedDescriptors, OfTheHostAndOfClockctlBecomeDevNull) {
  RestartableHost host;
  host.launch(inShell("<&- >&- 2>&-", host.words()));
  ASSERT_TRUE(host.answers());
  expectNullDescriptors(host.program());
  const Program watcher(host.folder(), "watcher",
                        inShell("<&- >&- 2>&-", host.ctlWords({"watch"})));
  ASSERT_TRUE(host.waitFor({"status"}, "clients      2"));
  expectNullDescriptors(watcher);
}

TEST(HangUp, DoesNotEndTheHost) {
  RunningHost host;
  host.program().signal(SIGHUP);
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "0\n");
  EXPECT_FALSE(host.program().ends(std::chrono::milliseconds(0)));
}

Outcome startLimited(const std::string& limit) {
  const RestartableHost host;
  Words words = inShell("", host.words());
  words[2].insert(0, "ulimit " + limit + "; ");
  return Program(host.folder(), "host", words).wait();
}

// Room for the line, and for no page of a database.
TEST(FileSizeLimit, AtTheStartIsARefusalInOneLine) {
  expectOneLine(startLimited("-f 4"), 1, {"cannot be written"});
}

// Room for the program and its libraries, but not for all that it needs at the start.
TEST(MemoryLimit, AtTheStartIsARefusalInOneLine) {
  if (support::kAddressSanitizer || support::kThreadSanitizer) return;  // they need terabytes
  const Outcome outcome = startLimited("-v 20000");
  expectOneLine(outcome, 1, {"clockhost: "});
  EXPECT_EQ(outcome.err.find("bad_alloc"), std::string::npos) << outcome.err;
}

// The log goes to a file here, and the framework's thread, which writes it, would be killed first.
TEST(FileSizeLimit, FailsASetWithALineAndTheHostGoesOn) {
  RunningHost host({"--log-level", "6"});
  ASSERT_EQ(host.ctl({"set", "date-format", "1"}).status, 0);
  rlimit before{};
  const rlimit none{0, RLIM_INFINITY};
  ASSERT_EQ(prlimit(host.program().id(), RLIMIT_FSIZE, &none, &before), 0);
  expectOneLine(host.ctl({"set", "date-format", "2"}), 1, {"date-format"});
  EXPECT_EQ(host.ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "1\n");
  ASSERT_EQ(prlimit(host.program().id(), RLIMIT_FSIZE, &before, nullptr), 0);
  EXPECT_EQ(host.ctl({"set", "date-format", "2"}).status, 0);
}

class LostOutput : public ::testing::TestWithParam<Words> {};

TEST_P(LostOutput, IsToldInOneLine) {
  RunningHost host;
  const Words words = inShell(">/dev/full", host.ctlWords(GetParam()));
  expectOneLine(Program(host.folder(), "full", words).wait(), 1,
                {"standard output does not take everything: No space left on device"});
}

INSTANTIATE_TEST_SUITE_P(OfClockctl, LostOutput,
                         ::testing::Values(Words{"--help"}, Words{"keys"}, Words{"--json", "keys"},
                                           Words{"call", "getTime"}));

TEST(LostOutput, ToAReaderThatHasGoneIsNoError) {
  RunningHost host;
  const std::string fifo = host.folder() / "gone";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const Words script = {
      "/bin/sh",     "-c",     ": <\"$0\" & exec 3>\"$0\"; wait; \"$@\" >&3; echo $? >&2",
      fifo,          CLOCKCTL, "--socket",
      host.socket(), "keys"};
  const Outcome outcome = Program(host.folder(), "gone", script).wait();
  EXPECT_EQ(outcome.err, "0\n");
}

TEST(UnreadableScenario, IsRefusedInOneLine) {
  const support::TemporaryFolder folder;
  // The last can be opened, but not read.
  for (const fs::path& file : {folder.path(), folder / "none", fs::path("/proc/self/mem")}) {
    const Words words = {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--scenario", file};
    expectOneLine(Program(folder.path(), "clockhost", words).wait(), 2, {"cannot be read"});
  }
}

// A program of that name on this machine would set this machine's clock.
TEST(NtpClient, WithoutAStandInIsNotTheMachinesOwn) {
  const support::TemporaryFolder folder;
  const std::string copy = folder / "clockhost";
  fs::copy_file(CLOCKHOST, copy);
  RestartableHost host(copy, {"--network", "up"});
  Words words = host.words();
  words.insert(words.begin(), {"/usr/bin/env", "XDG_STATE_HOME=" + folder.path().string()});
  host.launch(words);
  ASSERT_TRUE(host.answers());
  ASSERT_EQ(host.ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
  EXPECT_TRUE(host.program().says(R"(cannot start "/sbin/ntpclient": nothing stands in for it)"))
      << host.program().err();
  const std::string status = host.ctl({"status"}).out;
  EXPECT_NE(status.find("ntp client"), std::string::npos) << status;
  EXPECT_EQ(status.find("process "), std::string::npos) << status;
}

TEST(NtpClient, IsTheOneThatWasNamedAndNotTheStandIn) {
  RunningHost host({"--network", "up", "--program", "/sbin/ntpclient=/no/client"});
  ASSERT_EQ(host.ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
  EXPECT_TRUE(host.program().says(R"(cannot start "/no/client": No such file)"));
}

// As every program that tests start, it cannot set the machine's clock.
TEST(ClockOfTheMachine, IsRefusedInOneLineToAHostThatMayNotSetIt) {
  expectOneLine(RestartableHost().startAnother({"--speed", "1", "--clock", "system"}), 1,
                {"--clock system sets this machine's clock and needs the privilege to"});
}

TEST(SavedTime, ThatIsAbsurdIsToldAtTheNextStart) {
  RestartableHost host;
  const auto run = [&](const Words& options) {
    host.start(options);
    return host.end(SIGTERM).err;
  };
  const std::string line = "the saved time \"1999-01-01T00:00:00+00:00\" is not between";
  EXPECT_EQ(run({}).find("the saved time"), std::string::npos);
  EXPECT_EQ(run({"--at", "1999-01-01T00:00:00Z"}).find(line), std::string::npos);
  const std::string told = run({});
  EXPECT_NE(told.find(line), std::string::npos) << told;
}

}  // namespace
}  // namespace integration
