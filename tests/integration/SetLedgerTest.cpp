// What a restart may show after sets, with and without their answers.
#include "integration/SetLedger.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace integration {
namespace {

using Values = std::vector<std::string>;

constexpr const char* kKey = "key";

// The ledger of a key that was "first", after these acts: "one" asks for a value, "+2" accepts the
// second set, "-2" refuses it.
SetLedger ledgerAfter(const std::string& acts) {
  SetLedger ledger;
  ledger.begins(kKey, "first");
  std::istringstream words(acts);
  for (std::string word; words >> word;) {
    if (word[0] == '+' || word[0] == '-') {
      ledger.answered(kKey, std::stoull(word.substr(1)), word[0] == '+');
    } else {
      ledger.asked(kKey, word);
    }
  }
  return ledger;
}

TEST(SetLedger, AllowsTheLastAcknowledgedValueAndTheOpenOnesSince) {
  const struct {
    const char* acts;
    Values allowed;
  } rows[] = {
      {"", {"first"}},
      {"one", {"first", "one"}},
      {"one +1 two +2", {"two"}},
      {"one two +2", {"two"}},
      {"one two one +3", {"one"}},
      {"one two +1", {"one", "two"}},
      // The store may have failed after it wrote a value that was then refused.
      {"one -1", {"first", "one"}},
      {"one -1 two +2", {"two"}},
      {"one two -2", {"first", "one", "two"}},
  };
  for (const auto& [acts, allowed] : rows) {
    const SetLedger ledger = ledgerAfter(acts);
    Values found;
    for (const char* const value : {"first", "one", "two", ""}) {
      if (ledger.allows(kKey, value)) found.emplace_back(value);
    }
    EXPECT_EQ(found, allowed) << acts;
  }
}

TEST(SetLedger, KeepsWhatARestartHasShown) {
  SetLedger ledger = ledgerAfter("one");
  EXPECT_TRUE(ledger.found(kKey, "one"));
  EXPECT_TRUE(ledger.allows(kKey, "one"));
  EXPECT_FALSE(ledger.allows(kKey, "first"));
  ledger.answered(kKey, ledger.asked(kKey, "two"), false);
  EXPECT_FALSE(ledger.found(kKey, "two")) << "it had an answer";
  ledger.asked(kKey, "two");
  EXPECT_FALSE(ledger.found(kKey, "two")) << "it was kept already";
}

TEST(SetLedger, PrintsWhatItAllows) {
  EXPECT_EQ(ledgerAfter("one -1 two").allowed(kKey), "kept first, refused one, asked two");
}

TEST(SetLedger, HasAnEntryForEachKey) {
  SetLedger ledger = ledgerAfter("one +1");
  ledger.begins("other", "0");
  EXPECT_TRUE(ledger.allows("other", "0"));
  EXPECT_FALSE(ledger.allows("other", "one"));
  EXPECT_EQ(ledger.keys(), (Values{kKey, "other"}));
}

TEST(SetLedger, RefusesUnknownKeysAndAnswers) {
  EXPECT_THROW(ledgerAfter("one +1 +1"), std::out_of_range);
  EXPECT_THROW(static_cast<void>(ledgerAfter("").allows("other", "")), std::out_of_range);
  EXPECT_THROW(ledgerAfter("").asked("other", "one"), std::out_of_range);
}

}  // namespace
}  // namespace integration
