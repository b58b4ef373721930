// Power cuts lose nothing that was acknowledged; ./dev powercuts makes more of them.
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

TEST(PowerCut, KeepsWhatWasAcknowledged) {
  const std::uint64_t seed = std::random_device{}();
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  std::fflush(stdout);
  PowerCuts telephone(seed);
  EXPECT_TRUE(telephone.cut(CLOCK_POWER_CUTS)) << telephone.failure();
  std::printf("%s\n", toText(telephone.figures()).c_str());
}

TEST(PowerCut, WithoutAnAcknowledgementFails) {
  PowerCuts telephone(1);
  EXPECT_FALSE(telephone.cut(0));
  EXPECT_EQ(telephone.failure(), "cut 0: no set was acknowledged");
}

TEST(PowerCut, LoadReportsFaultsOtherThanTheHostsEnd) {
  integration::RestartableHost host;
  host.launch();
  ASSERT_TRUE(host.answers());
  const auto client = host.connectControl();
  Promises promises;
  Load load(host, promises, 1);
  // Another client sets the clock after the reporter has set it and before it saves the time.
  const auto deadline = std::chrono::steady_clock::now() + kLimit;
  while (load.fault().empty() && std::chrono::steady_clock::now() < deadline) {
    const auto reply = client->control(R"({"verb":"clock","action":"jump","seconds":1})", kLimit);
    EXPECT_TRUE(reply);
    if (!reply) break;  // the load's threads end with the host
  }
  host.end(SIGKILL);
  load.end();
  EXPECT_EQ(load.fault().find("saved "), 0U) << load.fault();
}

TEST(PowerCut, StoppedProgramCleansUp) {
  const support::TemporaryFolder folder;
  integration::Program powercuts(folder.path(), "powercuts", {POWERCUTS, "--cuts", "1000000"});
  const auto home = integration::hostFolderOf(powercuts.id());
  EXPECT_TRUE(std::filesystem::exists(home));
  powercuts.signal(SIGTERM);
  EXPECT_EQ(powercuts.wait().status, 128 + SIGTERM);
  EXPECT_FALSE(std::filesystem::exists(home));
  EXPECT_FALSE(integration::isInUse(home));
}

TEST(PowerCut, ProgramRefusesZeroCuts) {
  const support::TemporaryFolder folder;
  EXPECT_EQ(
      integration::Program(folder.path(), "powercuts", {POWERCUTS, "--cuts", "0"}).wait().status,
      2);
}

}  // namespace
}  // namespace powercut
