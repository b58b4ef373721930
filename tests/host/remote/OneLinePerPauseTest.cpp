#include "remote/OneLinePerPause.h"

#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace host {
namespace {

constexpr OneLinePerPause::Clock::time_point kStart{std::chrono::hours(1)};
constexpr auto kNextLine = kStart + OneLinePerPause::kPause;

TEST(OneLinePerPause, CountsTheLinesSuppressedSinceTheLastOne) {
  const support::LogCapture log;
  OneLinePerPause line("client turned away");
  line.log("first", kStart);
  for (int i = 0; i < 3; ++i) line.log("suppressed", kNextLine - std::chrono::nanoseconds(1));
  line.log("second", kNextLine);
  line.log("third", kNextLine + OneLinePerPause::kPause);
  EXPECT_EQ(log.text(),
            "clockhost 3: client turned away: first\n"
            "clockhost 3: client turned away: second; 3 more since the last line\n"
            "clockhost 3: client turned away: third\n");
}

TEST(OneLinePerPause, ThrowsNothingWithoutMemory) {
  OneLinePerPause line("client turned away");
  line.log("first", kStart);
  line.log("suppressed", kStart);
  const support::NoMemory none;
  EXPECT_NO_THROW(line.log("second", kNextLine));
}

}  // namespace
}  // namespace host
