// A telephone whose power is cut keeps what it has promised; see ./dev powercuts for more of them.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>

#include "integration/HostTraces.h"
#include "powercut/Load.h"
#include "powercut/PowerCuts.h"
#include "remote/RemoteClient.h"
#include "support/TemporaryFolder.h"

namespace powercut {
namespace {

constexpr std::chrono::seconds kLimit(20);

TEST(PowerCut, KeepsWhatWasPromised) {
  const std::uint64_t seed = std::random_device{}();
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  std::fflush(stdout);
  PowerCuts telephone(seed);
  EXPECT_TRUE(telephone.cut(CLOCK_POWER_CUTS)) << telephone.complaint();
  std::printf("%s\n", toText(telephone.figures()).c_str());
}

TEST(PowerCut, WithoutAPromiseKeepsNothing) {
  PowerCuts telephone(1);
  EXPECT_FALSE(telephone.cut(0));
  EXPECT_EQ(telephone.complaint(), "cut 0: no set was acknowledged");
}

TEST(PowerCut, LoadTellsWhatItMetBesideTheHostsEnd) {
  integration::RestartableHost host;
  host.launch();
  ASSERT_TRUE(host.answers());
  const auto client = host.connectControl();
  Promises promises;
  Load load(host, promises, 1);
  // Somebody else sets the clock between the reporter's setting and its saving of the time.
  const auto deadline = std::chrono::steady_clock::now() + kLimit;
  while (load.fault().empty() && std::chrono::steady_clock::now() < deadline) {
    const auto reply = client->control(R"({"verb":"clock","action":"jump","seconds":1})", kLimit);
    EXPECT_TRUE(reply);
    if (!reply) break;  // the load's threads end when the host has
  }
  host.end(SIGKILL);
  load.end();
  EXPECT_EQ(load.fault().find("saved "), 0U) << load.fault();
}

TEST(PowerCut, ProgramThatIsStoppedLeavesNothing) {
  const support::TemporaryFolder folder;
  integration::Program powercuts(folder.path(), "powercuts", {POWERCUTS, "--cuts", "1000000"});
  const auto home = integration::folderOfTheHostOf(powercuts.id());
  EXPECT_TRUE(std::filesystem::exists(home));
  powercuts.signal(SIGTERM);
  EXPECT_EQ(powercuts.wait().status, 128 + SIGTERM);
  EXPECT_FALSE(std::filesystem::exists(home));
  EXPECT_FALSE(integration::livesSomebodyIn(home));
}

TEST(PowerCut, ProgramRefusesToCutNothing) {
  const support::TemporaryFolder folder;
  EXPECT_EQ(
      integration::Program(folder.path(), "powercuts", {POWERCUTS, "--cuts", "0"}).wait().status,
      2);
}

TEST(SavedTimes, AllowWhatWasAcknowledgedLastAndWhatCameSince) {
  SavedTimes times;
  EXPECT_TRUE(times.allows("2016-06-16T00:00:00+00:00"));
  EXPECT_FALSE(times.allows("2026-01-01T00:16:40+00:00"));
  const std::string first = times.next();
  EXPECT_EQ(first, "2026-01-01T00:16:40+00:00");
  EXPECT_TRUE(times.allows("2016-06-16T00:00:00+00:00"));
  EXPECT_TRUE(times.allows(first));
  times.acknowledged(first);
  EXPECT_FALSE(times.allows("2016-06-16T00:00:00+00:00"));
  const std::string second = times.next();
  EXPECT_TRUE(times.allows(first));
  EXPECT_TRUE(times.allows(second));
  times.found(first);
  EXPECT_FALSE(times.allows(second));
}

}  // namespace
}  // namespace powercut
