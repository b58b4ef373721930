#include "framework/FailedLookups.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace host {
namespace {

using namespace std::chrono_literals;

constexpr FailedLookups::Instant kBegin{};

TEST(FailedLookups, HoldANameForAWhile) {
  FailedLookups failed;
  EXPECT_FALSE(failed.holds("a", kBegin));
  EXPECT_TRUE(failed.add("a", kBegin));
  EXPECT_TRUE(failed.holds("a", kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.holds("a", kBegin + FailedLookups::kKept));
  EXPECT_FALSE(failed.holds("b", kBegin));
}

TEST(FailedLookups, TheFirstFailureIsToldAndTheNextOnesAreNotUntilAnAddressWasFound) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  EXPECT_FALSE(failed.add("a", kBegin + FailedLookups::kKept));
  EXPECT_TRUE(failed.holds("a", kBegin + FailedLookups::kKept));
  failed.forget("a");
  EXPECT_FALSE(failed.holds("a", kBegin));
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.forgetAll();
  EXPECT_FALSE(failed.holds("a", kBegin));
}

TEST(FailedLookups, OfTooManyTheOldestIsForgotten) {
  FailedLookups failed;
  for (std::size_t i = 0; i <= FailedLookups::kMost; ++i) {
    EXPECT_TRUE(failed.add(std::to_string(i), kBegin + std::chrono::nanoseconds(i)));
  }
  EXPECT_FALSE(failed.holds("0", kBegin));
  EXPECT_TRUE(failed.holds("1", kBegin));
  EXPECT_TRUE(failed.holds(std::to_string(FailedLookups::kMost), kBegin));
}

TEST(FailedLookups, ANameWithoutAnAnswerMeansASilentServerForAWhile) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  EXPECT_FALSE(failed.isSilent(kBegin)) << "there is no such name: an answer, too";
  failed.setUnanswered("a");
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.isSilent(kBegin + FailedLookups::kKept));
}

TEST(FailedLookups, ANameThatIsAskedForAgainProlongsNoSilence) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.allowAll();
  EXPECT_TRUE(failed.add("a", kBegin + 1s));
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.isSilent(kBegin + FailedLookups::kKept));
}

TEST(FailedLookups, AnyAnswerEndsTheSilenceOfItsNameAndNotTheFailure) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.setAnswered("a");
  EXPECT_FALSE(failed.isSilent(kBegin));
  failed.setUnanswered("a");
  EXPECT_FALSE(failed.isSilent(kBegin)) << "the answer came between";
  EXPECT_TRUE(failed.holds("a", kBegin));
  EXPECT_FALSE(failed.add("a", kBegin + FailedLookups::kKept));
  failed.setUnanswered("a");
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept)) << "it was asked for anew";
  failed.setAnswered("b");
  EXPECT_FALSE(failed.holds("b", kBegin));
}

TEST(FailedLookups, AServerIsNoLongerSilentWhenAnAddressComesLate) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.forget("a");
  EXPECT_FALSE(failed.isSilent(kBegin));
  failed.setUnanswered("a");
  EXPECT_FALSE(failed.isSilent(kBegin));
}

TEST(FailedLookups, NamesThatMayBeAskedForAgainLeaveTheServerSilentForTheSameWhile) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.allowAll();
  EXPECT_FALSE(failed.holds("a", kBegin));
  EXPECT_TRUE(failed.isSilent(kBegin + FailedLookups::kKept - 1ns));
  EXPECT_FALSE(failed.isSilent(kBegin + FailedLookups::kKept));
  EXPECT_TRUE(failed.add("a", kBegin)) << "the failure is told again";
  EXPECT_TRUE(failed.holds("a", kBegin));
}

TEST(FailedLookups, AnAddressEndsTheSilenceOfANameThatMayBeAskedForAgain) {
  FailedLookups failed;
  EXPECT_TRUE(failed.add("a", kBegin));
  failed.setUnanswered("a");
  failed.allowAll();
  failed.forget("a");
  EXPECT_FALSE(failed.isSilent(kBegin));
}

}  // namespace
}  // namespace host
