#include "services/Repeats.h"

#include <gtest/gtest.h>

namespace host {
namespace {

using std::chrono::seconds;

// Attempts, and the records that they lead to.
class RepeatedAttempts : public ::testing::Test {
 protected:
  // The number of the record that counts the attempt: an earlier one or a new one.
  std::int64_t attempt(const std::string& user, bool failure, const std::string& content) {
    const Repeats::Attempt attempt{user, failure, 3, !failure, content};
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

TEST_F(RepeatedAttempts, AreCountedWhenEqual) {
  EXPECT_EQ(accepted("x"), 1);
  EXPECT_EQ(accepted("x"), 1);
  EXPECT_EQ(refused("x"), 2);
  EXPECT_EQ(refused("x"), 2);
  EXPECT_EQ(attempt("b", false, "x"), 3) << "another user";
}

TEST_F(RepeatedAttempts, HaveRecordsWhenAcceptedAndDifferent) {
  for (int i = 1; i <= 100; ++i) EXPECT_EQ(accepted(std::to_string(i)), i);
  EXPECT_EQ(accepted("1"), 101) << "differs from the previous one";
}

TEST_F(RepeatedAttempts, AreCountedWhenRefusedAfterTheFirstRecords) {
  for (int i = 1; i <= Repeats::kOwnRecords; ++i) EXPECT_EQ(refused(std::to_string(i)), i);
  for (int i = 0; i < 10'000; ++i) {
    EXPECT_EQ(refused("other " + std::to_string(i)), Repeats::kOwnRecords);
  }
  EXPECT_EQ(attempt("b", true, "x"), Repeats::kOwnRecords + 1) << "another user";
}

// Accepted attempts or other users in between do not lead to more records.
TEST_F(RepeatedAttempts, AreCountedWhenRefusedAndInterleaved) {
  for (int i = 0; i < 1000; ++i) {
    refused(std::to_string(i));
    accepted("x");
    attempt("b", true, std::to_string(i));
  }
  EXPECT_EQ(newest, 2 * Repeats::kOwnRecords + 1);
}

TEST_F(RepeatedAttempts, HaveRecordsAgainAfterAnIdleTime) {
  for (int i = 0; i < 2 * Repeats::kOwnRecords; ++i) refused(std::to_string(i));
  now += Repeats::kIdle;
  EXPECT_EQ(refused("x"), Repeats::kOwnRecords);
  now += Repeats::kIdle + seconds(1);
  EXPECT_EQ(refused("x"), Repeats::kOwnRecords + 1);
  EXPECT_EQ(refused("y"), Repeats::kOwnRecords + 2);
}

TEST_F(RepeatedAttempts, AreNotCountedInADeletedRecord) {
  EXPECT_EQ(accepted("x"), 1);
  repeats.forget(1);
  EXPECT_EQ(accepted("x"), 2);
}

TEST_F(RepeatedAttempts, OfTheLeastRecentUserAreForgotten) {
  for (std::size_t i = 1; i <= Repeats::kRuns; ++i) attempt(std::to_string(i), true, "x");
  EXPECT_EQ(attempt("1", true, "x"), 1);
  attempt("one more", true, "x");
  EXPECT_EQ(attempt("1", true, "x"), 1);
  EXPECT_EQ(attempt("2", true, "x"), Repeats::kRuns + 2);
}

}  // namespace
}  // namespace host
