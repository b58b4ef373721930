#include "services/Repeats.h"

#include <gtest/gtest.h>

namespace host {
namespace {

using std::chrono::seconds;

// What somebody tries, and the records that come of it.
class Tried : public ::testing::Test {
 protected:
  // The number of the record that it is counted in, or of its own.
  std::int64_t attempt(const std::string& user, bool failure, const std::string& content) {
    const Repeats::Attempt attempt{user, failure, 3, failure, content};
    if (const auto earlier = repeats.earlier(attempt, now)) return earlier;
    repeats.recorded(attempt, ++newest, now);
    return newest;
  }
  std::int64_t accepted(const std::string& content) { return attempt("a", false, content); }
  std::int64_t refused(const std::string& content) { return attempt("a", true, content); }

  Repeats repeats;
  Repeats::Time now{};
  std::int64_t newest = 0;
};

TEST_F(Tried, TheSameAgainIsCountedInTheFirst) {
  EXPECT_EQ(accepted("x"), 1);
  EXPECT_EQ(accepted("x"), 1);
  EXPECT_EQ(refused("x"), 2);
  EXPECT_EQ(refused("x"), 2);
  EXPECT_EQ(attempt("b", false, "x"), 3) << "another source";
}

TEST_F(Tried, AcceptedOnesThatDifferAreAllSpelledOut) {
  for (int i = 1; i <= 100; ++i) EXPECT_EQ(accepted(std::to_string(i)), i);
  EXPECT_EQ(accepted("1"), 101) << "no repeat of the one before";
}

TEST_F(Tried, RefusalsOfOneSourceAreCountedWhateverTheySay) {
  for (int i = 1; i <= Repeats::kOwnRecords; ++i) EXPECT_EQ(refused(std::to_string(i)), i);
  for (int i = 0; i < 10'000; ++i) {
    EXPECT_EQ(refused("other " + std::to_string(i)), Repeats::kOwnRecords);
  }
  EXPECT_EQ(attempt("b", true, "x"), Repeats::kOwnRecords + 1) << "another source";
}

// Neither an accepted one in between nor taking turns spells more out.
TEST_F(Tried, RefusalsAreCountedAlsoInTurnsWithOthers) {
  for (int i = 0; i < 1000; ++i) {
    refused(std::to_string(i));
    accepted("x");
    attempt("b", true, std::to_string(i));
  }
  EXPECT_EQ(newest, 2 * Repeats::kOwnRecords + 1);
}

TEST_F(Tried, QuietSourceStartsAnew) {
  for (int i = 0; i < 2 * Repeats::kOwnRecords; ++i) refused(std::to_string(i));
  now += Repeats::kIdle;
  EXPECT_EQ(refused("x"), Repeats::kOwnRecords);
  now += Repeats::kIdle + seconds(1);
  EXPECT_EQ(refused("x"), Repeats::kOwnRecords + 1);
  EXPECT_EQ(refused("y"), Repeats::kOwnRecords + 2);
}

TEST_F(Tried, NothingIsCountedInARecordThatIsGone) {
  EXPECT_EQ(accepted("x"), 1);
  repeats.forget(1);
  EXPECT_EQ(accepted("x"), 2);
}

TEST_F(Tried, SourceThatIsQuietLongestIsForgottenFirst) {
  for (std::size_t i = 1; i <= Repeats::kSources; ++i) attempt(std::to_string(i), true, "x");
  EXPECT_EQ(attempt("1", true, "x"), 1);
  attempt("one more", true, "x");
  EXPECT_EQ(attempt("1", true, "x"), 1);
  EXPECT_EQ(attempt("2", true, "x"), Repeats::kSources + 2);
}

}  // namespace
}  // namespace host
