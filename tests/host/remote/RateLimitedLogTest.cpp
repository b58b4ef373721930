#include "remote/RateLimitedLog.h"

#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace host {
namespace {

constexpr RateLimitedLog::Clock::time_point kStart{std::chrono::hours(1)};
constexpr auto kNextLine = kStart + RateLimitedLog::kBetweenLines;

TEST(RateLimitedLog, CountsTheLinesSuppressedSinceTheLastOne) {
  const support::LogCapture log;
  RateLimitedLog line("client turned away");
  line.log("first", kStart);
  for (int i = 0; i < 3; ++i) line.log("suppressed", kNextLine - std::chrono::nanoseconds(1));
  line.log("second", kNextLine);
  line.log("third", kNextLine + RateLimitedLog::kBetweenLines);
  EXPECT_EQ(log.text(),
            "clockhost 3: client turned away: first\n"
            "clockhost 3: client turned away: second; 3 more since the last line\n"
            "clockhost 3: client turned away: third\n");
}

TEST(RateLimitedLog, ThrowsNothingWithoutMemory) {
  RateLimitedLog line("client turned away");
  line.log("first", kStart);
  line.log("suppressed", kStart);
  const support::NoMemory none;
  EXPECT_NO_THROW(line.log("second", kNextLine));
}

}  // namespace
}  // namespace host
