// The security log at its bound, as clockctl lists it.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "integration/RunningHost.h"
#include "remote/RemoteClient.h"

namespace integration {
namespace {

using nlohmann::json;

constexpr std::size_t kBound = 10'000;

// Sets of a key that no clock has: refused, and recorded all the same.
void attempt(const RunningHost& running, std::size_t times) {
  host::RemoteClient client(running.controlSocket());
  const std::string set = json({{"verb", "set"}, {"key", "k"}, {"value", "v"}}).dump();
  for (std::size_t i = 0; i < times; ++i) {
    ASSERT_TRUE(client.control(set, std::chrono::seconds(10))) << i;
  }
}

TEST(SecurityLogAtItsBound, IsListedWholeAndSaysWhatHasGone) {
  RunningHost running;
  attempt(running, kBound + 1);
  const std::string note = "records kept: 10000; older ones gone: 1, as at 10000 the oldest go";

  const json answer = json::parse(running.ctl({"--json", "security-log"}).out);
  ASSERT_EQ(answer.at("records").size(), kBound);
  for (std::size_t i = 0; i < kBound; ++i) ASSERT_EQ(answer["records"][i].at("number"), i + 2);
  EXPECT_EQ(answer.at("kept"), kBound);
  EXPECT_EQ(answer.at("dropped"), 1);
  EXPECT_EQ(answer.at("note"), note);
  EXPECT_FALSE(answer.contains("after"));

  std::istringstream lines(running.ctl({"security-log"}).out);
  std::string line;
  for (std::size_t i = 0; i < kBound; ++i) {
    ASSERT_TRUE(std::getline(lines, line));
    ASSERT_EQ(line.substr(0, line.find(' ')), std::to_string(i + 2));
  }
  EXPECT_TRUE(std::getline(lines, line) && line == "note         " + note) << line;
  EXPECT_FALSE(std::getline(lines, line)) << line;
}

}  // namespace
}  // namespace integration
