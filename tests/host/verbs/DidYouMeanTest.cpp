#include "verbs/DidYouMean.h"

#include <gtest/gtest.h>

#include <array>

#include "verbs/KeyCatalogue.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"

namespace host {
namespace {

TEST(EditDistance, CountsInsertionsDeletionsReplacementsAndSwaps) {
  EXPECT_EQ(editDistance("getTime", "getTime"), 0U);
  EXPECT_EQ(editDistance("AMZ", "amz"), 0U);
  EXPECT_EQ(editDistance("getTme", "getTime"), 1U);
  EXPECT_EQ(editDistance("getTiime", "getTime"), 1U);
  EXPECT_EQ(editDistance("getTine", "getTime"), 1U);
  EXPECT_EQ(editDistance("getTiem", "getTime"), 1U);
  EXPECT_EQ(editDistance("", "getTime"), 7U);
  EXPECT_EQ(editDistance("getTime", ""), 7U);
}

TEST(EditDistance, IsBoundedForTextsOfAnyLength) {
  EXPECT_LE(editDistance(std::string(1 << 20, 'x'), std::string(1 << 20, 'y')), 256U);
}

TEST(EditDistance, OnlyTheFirst128LettersCount) {
  const std::string same(127, 'x');
  EXPECT_EQ(editDistance(same + 'a', same + 'b'), 1U);
  EXPECT_EQ(editDistance(same + "xa", same + "xb"), 0U);
}

TEST(DidYouMean, PrefersTheFirstOfEquallyNearWords) {
  constexpr std::array<std::string_view, 3> kWords = {"bat", "cat", "rat"};
  EXPECT_EQ(nearest("hat", kWords), "bat");
}

TEST(DidYouMean, FindsMistypedMethodsAndKeys) {
  EXPECT_EQ(nearest("GetTime", namesOf(remoteMethods())), "getTime");
  EXPECT_EQ(nearest("getTimeInt", namesOf(remoteMethods())), "getTimeInts");
  EXPECT_EQ(nearest("dateformat", namesOf(managementKeys())), "date-format");
  EXPECT_EQ(nearest("sntp-adr", namesOf(managementKeys())), "sntp-addr");
  EXPECT_EQ(nearest("daylight-saving", namesOf(managementKeys())), "daylight-save");
}

TEST(Suggestion, NamesTheNearest) {
  EXPECT_EQ(suggestion("tme", namesOf(managementKeys())), "; did you mean \"time\"?");
  EXPECT_EQ(suggestion("tme", {}), "");
}

TEST(Suggestion, IsMadeForUpToAThirdOfTheLongerWord) {
  constexpr std::array<std::string_view, 1> kNine = {"abcdefghi"};
  EXPECT_EQ(suggestion("abcdef", kNine), "; did you mean \"abcdefghi\"?");
  EXPECT_EQ(suggestion("abcde", kNine), "");
  EXPECT_EQ(suggestion("abcdefghijkl", kNine), "; did you mean \"abcdefghi\"?");
  EXPECT_EQ(suggestion("abcdefghijklmn", kNine), "");
}

TEST(Suggestion, IsMadeForOneWrongLetterOfAShortWord) {
  constexpr std::array<std::string_view, 1> kTwo = {"on"};
  EXPECT_EQ(suggestion("om", kTwo), "; did you mean \"on\"?");
  EXPECT_EQ(suggestion("xy", kTwo), "");
}

TEST(Suggestion, IsNotMadeForAnUnrelatedWord) {
  EXPECT_EQ(suggestion("banana", namesOf(remoteMethods())), "");
  EXPECT_EQ(suggestion(std::string(100'000, 'x'), namesOf(remoteMethods())), "");
}

}  // namespace
}  // namespace host
