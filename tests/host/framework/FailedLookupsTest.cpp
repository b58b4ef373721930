#include "framework/FailedLookups.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace host {
namespace {

using namespace std::chrono_literals;

constexpr FailedLookups::Instant kBegin{};

TEST(FailedLookups, HoldANameForALimitedTime) {
  FailedLookups failed;
  EXPECT_FALSE(failed.holds("a", kBegin));
  EXPECT_TRUE(failed.add("a", kBegin));
  EXPECT_TRUE(failed.holds("a", kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.holds("a", kBegin + FailedLookups::kKept));
  EXPECT_FALSE(failed.holds("b", kBegin));
}

TEST(FailedLookups, OnlyTheFirstFailureIsToBeLogged) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  EXPECT_FALSE(failed.add("a", kBegin + FailedLookups::kKept));
  EXPECT_TRUE(failed.holds("a", kBegin + FailedLookups::kKept));
  failed.forget("a");
  EXPECT_FALSE(failed.holds("a", kBegin));
  EXPECT_TRUE(failed.add("a", kBegin)) << "it failed again after an address was found";
  failed.forgetAll();
  EXPECT_FALSE(failed.holds("a", kBegin));
}

TEST(FailedLookups, DropTheOldestNameBeyondTheLimit) {
  FailedLookups failed;
  for (std::size_t i = 0; i <= FailedLookups::kMost; ++i) {
    EXPECT_TRUE(failed.add(std::to_string(i), kBegin + std::chrono::nanoseconds(i)));
  }
  EXPECT_FALSE(failed.holds("0", kBegin));
  EXPECT_TRUE(failed.holds("1", kBegin));
  EXPECT_TRUE(failed.holds(std::to_string(FailedLookups::kMost), kBegin));
}

TEST(FailedLookups, UnansweredLookupMarksTheServerSilent) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  EXPECT_FALSE(failed.isSilent(kBegin)) << "\"no such name\" is an answer";
  failed.setUnanswered("a");
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.isSilent(kBegin + FailedLookups::kKept));
}

TEST(FailedLookups, AnswerEndsTheSilenceButNotTheFailure) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.setAnswered("a");
  EXPECT_FALSE(failed.isSilent(kBegin));
  failed.setUnanswered("a");
  EXPECT_FALSE(failed.isSilent(kBegin)) << "an answer came meanwhile";
  EXPECT_TRUE(failed.holds("a", kBegin));
  EXPECT_FALSE(failed.add("a", kBegin + FailedLookups::kKept));
  failed.setUnanswered("a");
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept)) << "a new lookup got no answer";
  failed.setAnswered("b");
  EXPECT_FALSE(failed.holds("b", kBegin));
}

TEST(FailedLookups, NetworkChangeAllowsNamesButDoesNotEndOrProlongTheSilence) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.allowAll();
  EXPECT_FALSE(failed.holds("a", kBegin));
  EXPECT_TRUE(failed.isSilent(kBegin));
  EXPECT_TRUE(failed.add("a", kBegin + 1s)) << "the failure is logged again";
  EXPECT_TRUE(failed.holds("a", kBegin + 1s));
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.isSilent(kBegin + FailedLookups::kKept));
}

TEST(FailedLookups, LateAddressEndsTheSilence) {
  for (const bool allowed : {false, true}) {
    FailedLookups failed;
    EXPECT_TRUE(failed.add("a", kBegin));
    failed.setUnanswered("a");
    if (allowed) failed.allowAll();
    failed.forget("a");
    EXPECT_FALSE(failed.isSilent(kBegin)) << allowed;
    failed.setUnanswered("a");
    EXPECT_FALSE(failed.isSilent(kBegin)) << allowed;
  }
}

}  // namespace
}  // namespace host
