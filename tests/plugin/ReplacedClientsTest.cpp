// Replaces the NTP client a thousand times: no child and no descriptor stays.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "DevicePaths.h"
#include "framework/ProgramMap.h"
#include "support/Becomes.h"
#include "support/LogCapture.h"
#include "support/OpenDescriptors.h"
#include "support/Telephone.h"

namespace {

namespace fs = std::filesystem;

// True when this process has no child, ended or not.
bool isChildless() {
  return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

std::string behaviourOf(int client) {
  if (client % 200 == 199) return "hangs";
  return client % 3 == 0 ? "exits" : "waits";
}

// Waits until the newest client ignores SIGTERM, which the service sends to end it.
bool waitUntilItHangs() {
  return support::becomesTrue([] { return fs::remove("hanging"); });
}

class ClockWhoseClientIsReplaced : public testing::Test {
 protected:
  ClockWhoseClientIsReplaced() {
    host::ProgramMap::instance().set(DevicePaths::kNtpClientProgram, REPLACED_CLIENT);
    telephone.management.setValue("interface-status", "up");
    telephone.store("SNTPaddress", "127.0.0.1");
  }

  support::Telephone telephone;
  support::LogCapture log{5};
};

TEST_F(ClockWhoseClientIsReplaced, LeavesNoChildAndNoDescriptorAndAnswersAllTheWhile) {
  constexpr int kClients = 1000;
  telephone.switchOn();
  const std::ptrdiff_t before = support::openDescriptors();
  for (int client = 0; client < kClients; ++client) {
    const std::string behaviour = behaviourOf(client);
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    setenv("CLOCK_TEST_CLIENT", behaviour.c_str(), 1);
    telephone.physical.jack(5, 1);
    if (behaviour == "hangs") {
      ASSERT_TRUE(waitUntilItHangs()) << client;
    }
    ASSERT_EQ(telephone.service().getTime(), "00:00") << client;
  }
  EXPECT_EQ(log.count("ntpclient couldn't be started"), 0U);
  EXPECT_EQ(support::openDescriptors(), before);
  telephone.switchOff();
  EXPECT_TRUE(isChildless());
}

}  // namespace
