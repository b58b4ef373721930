// How the programs handle their environment: closed descriptors, resource limits, and the NTP
// clients of this machine.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/Sanitizers.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

void expectNullDescriptors(const Program& program) {
  for (const char* const standard : {"0", "1", "2"}) {
    std::error_code error;
    const fs::path link = "/proc/" + std::to_string(program.id()) + "/fd/" + standard;
    EXPECT_EQ(fs::read_symlink(link, error), "/dev/null");
  }
}

TEST(ClosedDescriptors, AreOpenedAsDevNullByHostAndClockctl) {
  RestartableHost host;
  host.launch(inShell("<&- >&- 2>&-", host.words()));
  ASSERT_TRUE(host.answers());
  expectNullDescriptors(host.program());
  const Program watcher(host.folder(), "watcher",
                        inShell("<&- >&- 2>&-", host.ctlWords({"watch"})));
  ASSERT_TRUE(host.waitFor({"status"}, "clients      2"));
  expectNullDescriptors(watcher);
}

Outcome startLimited(const std::string& limit) {
  const RestartableHost host;
  Words words = inShell("", host.words());
  words[2].insert(0, "ulimit " + limit + "; ");
  return Program(host.folder(), "host", words).wait();
}

// Enough to load the program and its libraries, too little to start up.
TEST(MemoryLimit, TooLowForTheStartIsRefusedInOneLine) {
  if (support::kAddressSanitizer || support::kThreadSanitizer) return;  // they map terabytes
  const Outcome outcome = startLimited("-v 20000");
  expectOneLine(outcome, 1, {"clockhost: "});
  EXPECT_EQ(outcome.err.find("bad_alloc"), std::string::npos) << outcome.err;
}

// Enough for the line on standard error, too little for a page of a store.
TEST(FileSizeLimit, TooLowForTheStartIsRefusedInOneLine) {
  expectOneLine(startLimited("-f 4"), 1, {"cannot be written"});
}

// Beyond the limit the kernel also sends SIGXFSZ, which would end a host that does not ignore it.
TEST(FileSizeLimit, FailsASetAndTheHostGoesOn) {
  RunningHost host({"--log-level", "6"});
  ASSERT_EQ(host.ctl({"set", "date-format", "1"}).status, 0);
  rlimit before{};
  const rlimit none{0, RLIM_INFINITY};
  ASSERT_EQ(prlimit(host.program().id(), RLIMIT_FSIZE, &none, &before), 0);
  expectOneLine(host.ctl({"set", "date-format", "2"}), 1,
                {"\"date-format\" could not be stored; see `clockctl log`"});
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "1\n");
  ASSERT_EQ(prlimit(host.program().id(), RLIMIT_FSIZE, &before, nullptr), 0);
  EXPECT_EQ(host.ctl({"set", "date-format", "2"}).status, 0);
}

// A program of that name on this machine would set this machine's clock.
TEST(NtpClient, OfThisMachineIsNotUsedWhenTheStandInIsMissing) {
  const support::TemporaryFolder folder;
  const std::string copy = folder / "clockhost";
  fs::copy_file(CLOCKHOST, copy);
  RestartableHost host(copy, {"--network", "up"});
  Words words = host.words();
  words.insert(words.begin(), {"/usr/bin/env", "XDG_STATE_HOME=" + folder.path().string()});
  host.launch(words);
  ASSERT_TRUE(host.answers());
  ASSERT_EQ(host.ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
  EXPECT_TRUE(host.program().says(R"(cannot start "/sbin/ntpclient": there is no stand-in for it)"))
      << host.program().err();
  const std::string status = host.ctl({"status"}).out;
  EXPECT_NE(status.find("ntp client"), std::string::npos) << status;
  EXPECT_EQ(status.find("process "), std::string::npos) << status;
}

TEST(NtpClient, NamedAsAnOptionReplacesTheStandIn) {
  RunningHost host({"--network", "up", "--program", "/sbin/ntpclient=/no/client"});
  ASSERT_EQ(host.ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
  EXPECT_TRUE(host.program().says(R"(cannot start "/no/client": No such file)"));
}

}  // namespace
}  // namespace integration
