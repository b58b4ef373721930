#include "remote/RareLine.h"

#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace host {
namespace {

constexpr RareLine::Clock::time_point kStart{std::chrono::hours(1)};
constexpr auto kNextLine = kStart + RareLine::kBetweenLines;

TEST(RareLine, SaysHowManyWereNotLoggedSinceTheLastOne) {
  const support::LogCapture log;
  RareLine line("client turned away");
  line.log("first", kStart);
  for (int i = 0; i < 3; ++i) line.log("untold", kNextLine - std::chrono::nanoseconds(1));
  line.log("second", kNextLine);
  line.log("third", kNextLine + RareLine::kBetweenLines);
  EXPECT_EQ(log.text(),
            "clockhost 3: client turned away: first\n"
            "clockhost 3: client turned away: second; so were 3 since the last line\n"
            "clockhost 3: client turned away: third\n");
}

TEST(RareLine, ThrowsNothingWithoutMemory) {
  RareLine line("client turned away");
  line.log("first", kStart);
  line.log("untold", kStart);
  const support::NoMemory none;
  EXPECT_NO_THROW(line.log("second", kNextLine));
}

}  // namespace
}  // namespace host
