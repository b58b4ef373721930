// A client that tries to push everything out of the security log, as clockctl lists it afterwards.

#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "integration/RestartableHost.h"
#include "remote/RemoteClient.h"

namespace integration {
namespace {

using nlohmann::json;

constexpr std::size_t kMany = 10'000;

// Sets of keys that no clock has: refused, and each another one.
void attempt(const RunningHost& running, std::size_t times) {
  host::RemoteClient client(running.controlSocket());
  for (std::size_t i = 0; i < times; ++i) {
    const json set = {{"verb", "set"}, {"key", "k" + std::to_string(i)}, {"value", "v"}};
    ASSERT_TRUE(client.control(set.dump(), std::chrono::seconds(10))) << i;
  }
}

TEST(SecurityLogUnderAFlood, KeepsWhatWasDoneAndCountsWhatWasTried) {
  RunningHost running;
  ASSERT_EQ(running.ctl({"set", "date-format", "1"}).status, 0);
  attempt(running, kMany);
  ASSERT_EQ(running.ctl({"clock", "jump", "2030-01-01T00:00:00Z"}).status, 0);

  const json answer = json::parse(running.ctl({"--json", "security-log"}).out);
  const json& records = answer.at("records");
  ASSERT_EQ(records.size(), 22U);
  EXPECT_EQ(records[0].at("text"), "ClockSettings set data date-format(1)");
  EXPECT_EQ(records[1].at("origin"),
            "uid " + std::to_string(::getuid()) + ", pid " + std::to_string(::getpid()));
  EXPECT_EQ(records[1].at("count"), 1);
  EXPECT_EQ(records[20].at("text"), "ClockSettings set data k9999(v)");
  EXPECT_EQ(records[20].at("count"), kMany - 19);
  EXPECT_EQ(records[21].at("text"), "Clock jump 2030-01-01T00:00:00Z, from 2016-06-16T00:00:00Z");
  EXPECT_EQ(answer.at("kept"), 22);
  EXPECT_EQ(answer.at("dropped"), 0);
}

}  // namespace
}  // namespace integration
