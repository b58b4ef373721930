// The pipe of the time reports of a running host: whose it is, and what becomes of it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <string>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPipe = "tmp/votk/ipc/ntpclient";

// As the NTP client does it: the listener opens the pipe when it comes to it.
bool report(const fs::path& pipe) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (std::chrono::steady_clock::now() < deadline) {
    const int writer = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (writer < 0) continue;
    constexpr std::array<unsigned char, 4> kTime{1, 2, 3, 4};
    const bool written = write(writer, kTime.data(), kTime.size()) == 4;
    close(writer);
    return written;
  }
  return false;
}

TEST(ReportPipe, SecondHostOnItIsRefusedInOneLine) {
  RunningHost first;
  expectOneLine(first.startAnother({"--state", first.folder() / "another", "--socket",
                                    first.folder() / "another.sock"}),
                1, {"ntpclient: is in use by another host"});
  EXPECT_EQ(first.ctl({"get", "date-format"}).out, "0\n");
}

TEST(ReportPipe, IsBelowTheStateUnlessAnotherPlaceIsNamed) {
  const support::TemporaryFolder folder;
  const Program host(folder.path(), "clockhost",
                     {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--state", folder / "state", "--socket",
                      folder / "socket", "--speed", "0"});
  ASSERT_TRUE(host.says("listening at")) << host.err();
  EXPECT_TRUE(fs::is_fifo(folder / "state/device" / kPipe));
}

TEST(ReportPipe, ReportsComeAgainAfterItWasDeleted) {
  RunningHost host({"--log-level", "5"});
  ASSERT_TRUE(report(host.pipe()));
  ASSERT_TRUE(host.program().says("Time change message received"));
  fs::rename(host.folder() / "root/tmp", host.folder() / "moved");
  ASSERT_TRUE(host.program().says("was deleted or replaced; it is made again"));
  const std::size_t seen = host.program().err().size();
  ASSERT_TRUE(report(host.pipe()));
  EXPECT_TRUE(host.program().says("Time change message received", seen)) << host.program().err();
}

}  // namespace
}  // namespace integration
