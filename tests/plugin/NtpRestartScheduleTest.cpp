// The restart after each full hour: spread by the device's MAC address.

#include <gmock/gmock.h>

#include <cstdlib>

#include "support/LogCapture.h"
#include "support/Telephone.h"

namespace {

using std::chrono::hours;

// A running clock of a device with this MAC address.
class ClockWithMacAddress : public testing::Test {
 protected:
  void start(const char* mac) {
    log.clear();
    if (mac != nullptr) telephone.management.setValue("mac-addr", mac);
    telephone.switchOn();
  }
  // The seconds of each "rand delay 600 + N".
  std::vector<int> delays() const {
    std::vector<int> seconds;
    const std::string start = "rand delay 600 + ";
    for (const auto& entry : log.entries()) {
      if (entry.text.rfind(start, 0) == 0) {
        EXPECT_THAT(entry.text, testing::EndsWith(" where rand_max is 2147483647"));
        seconds.push_back(std::stoi(entry.text.substr(start.size())));
      }
    }
    return seconds;
  }

  support::Telephone telephone;
  support::LogCapture log{5};
};

int expectedDelay() {
  constexpr double kSlots = 600.0;
  return static_cast<int>(std::rand() * kSlots / 2147483648.0) + 1;  // NOLINT(cert-msc50-cpp)
}

TEST_F(ClockWithMacAddress, SeedsWithItsLastSixDigitsAtTheFirstFullHour) {
  start("0001E3A1B2C3");
  EXPECT_FALSE(log.hasPart("seeding with"));
  telephone.pass(hours{1});
  EXPECT_TRUE(log.has(5, "mac address is 0001E3A1B2C3"));
  EXPECT_TRUE(log.has(5, "seeding with 10597059"));
  std::srand(10597059);
  EXPECT_THAT(delays(), testing::ElementsAre(expectedDelay()));
}

TEST_F(ClockWithMacAddress, SeedsOnce) {
  start("0001E3A1B2C3");
  telephone.pass(hours{48});
  EXPECT_EQ(log.count("seeding with 10597059"), 1U);
  EXPECT_EQ(delays().size(), 48U);
  for (const int delay : delays()) {
    EXPECT_GE(delay, 1);
    EXPECT_LE(delay, 600);
  }
}

TEST_F(ClockWithMacAddress, SeedsWithZeroFromAnInvalidMacAddress) {
  struct Row {
    const char* mac;
    const char* complaint;
  };
  for (const Row& row : {Row{"00:01:E3:A1:B2", "invalid mac length"}, Row{"", "invalid mac length"},
                         Row{"0001E3A1B2CG", "unexpected character"}}) {
    start(row.mac);
    telephone.pass(hours{1});
    EXPECT_TRUE(log.hasPart(row.complaint)) << row.mac;
    EXPECT_TRUE(log.has(5, "seeding with 0")) << row.mac;
    telephone.switchOff();
  }
}

TEST_F(ClockWithMacAddress, ReadsAMissingMacAddressOnlyOnce) {
  start(nullptr);
  telephone.pass(hours{1});
  telephone.management.setValue("mac-addr", "0001E3A1B2C3");
  telephone.pass(hours{1});
  EXPECT_FALSE(log.hasPart("seeding with"));
  EXPECT_EQ(delays().size(), 2U);
}

}  // namespace
