// What a restart may show after sets, with and without their answers.
#include "integration/SetLedger.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace integration {
namespace {

constexpr const char* kKey = "key";

class SetLedgerOfAKey : public ::testing::Test {
 protected:
  SetLedgerOfAKey() { ledger.begins(kKey, "first"); }

  SetLedger::Number ask(const std::string& value) { return ledger.asked(kKey, value); }
  void accept(SetLedger::Number set) { ledger.answered(kKey, set, true); }
  void refuse(SetLedger::Number set) { ledger.answered(kKey, set, false); }
  [[nodiscard]] bool allows(const std::string& value) const { return ledger.allows(kKey, value); }

  SetLedger ledger;
};

TEST_F(SetLedgerOfAKey, AllowsTheFirstValueAloneBeforeASet) {
  EXPECT_TRUE(allows("first"));
  EXPECT_FALSE(allows("one"));
  EXPECT_FALSE(allows(""));
}

TEST_F(SetLedgerOfAKey, AllowsBothSidesOfASetWithoutAnAnswer) {
  ask("one");
  EXPECT_TRUE(allows("first"));
  EXPECT_TRUE(allows("one"));
  EXPECT_FALSE(allows("two"));
}

TEST_F(SetLedgerOfAKey, AllowsNothingButWhatWasAcknowledgedLast) {
  accept(ask("one"));
  accept(ask("two"));
  EXPECT_FALSE(allows("first"));
  EXPECT_FALSE(allows("one"));
  EXPECT_TRUE(allows("two"));
}

TEST_F(SetLedgerOfAKey, CreditsAnAnswerToItsOwnSetAfterOneWasLost) {
  ask("one");
  accept(ask("two"));
  EXPECT_TRUE(allows("two"));
  EXPECT_FALSE(allows("one"));
  EXPECT_FALSE(allows("first"));
}

TEST_F(SetLedgerOfAKey, CreditsTheAnswerToItsOwnSetAmongThoseOfOneValue) {
  ask("one");
  ask("two");
  accept(ask("one"));
  EXPECT_TRUE(allows("one"));
  EXPECT_FALSE(allows("two"));
}

TEST_F(SetLedgerOfAKey, GoesOnAllowingWhatWasAskedForAfterTheAcknowledged) {
  const auto one = ask("one");
  ask("two");
  accept(one);
  EXPECT_TRUE(allows("one"));
  EXPECT_TRUE(allows("two"));
  EXPECT_FALSE(allows("first"));
}

TEST_F(SetLedgerOfAKey, AllowsARefusedValueUntilTheNextAcknowledged) {
  refuse(ask("one"));
  EXPECT_TRUE(allows("first"));
  EXPECT_TRUE(allows("one"));
  accept(ask("two"));
  EXPECT_FALSE(allows("one"));
}

TEST_F(SetLedgerOfAKey, KeepsALostSetAllowedAfterARefusal) {
  ask("one");
  refuse(ask("two"));
  EXPECT_TRUE(allows("first"));
  EXPECT_TRUE(allows("one"));
}

TEST_F(SetLedgerOfAKey, HoldsToWhatWasFound) {
  ask("one");
  EXPECT_TRUE(ledger.found(kKey, "one"));
  EXPECT_TRUE(allows("one"));
  EXPECT_FALSE(allows("first"));
  refuse(ask("two"));
  EXPECT_FALSE(ledger.found(kKey, "two")) << "it had an answer";
  ask("two");
  EXPECT_FALSE(ledger.found(kKey, "two")) << "it was kept already";
}

TEST_F(SetLedgerOfAKey, SaysWhatItAllows) {
  refuse(ask("one"));
  ask("two");
  EXPECT_EQ(ledger.allowed(kKey), "kept first, refused one, asked two");
}

TEST_F(SetLedgerOfAKey, KnowsEachKeyByItself) {
  ledger.begins("other", "0");
  accept(ask("one"));
  EXPECT_TRUE(ledger.allows("other", "0"));
  EXPECT_FALSE(ledger.allows("other", "one"));
  EXPECT_EQ(ledger.keys(), (std::vector<std::string>{kKey, "other"}));
}

TEST_F(SetLedgerOfAKey, RefusesAnAnswerThatNoSetWaitsFor) {
  const auto set = ask("one");
  accept(set);
  EXPECT_THROW(accept(set), std::out_of_range);
}

TEST(SetLedger, RefusesAKeyThatHasNotBegun) {
  SetLedger ledger;
  EXPECT_THROW(static_cast<void>(ledger.allows(kKey, "")), std::out_of_range);
  EXPECT_THROW(ledger.asked(kKey, "one"), std::out_of_range);
}

}  // namespace
}  // namespace integration
