#include "server/Feed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace panel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// What a page gets after what came before it.
constexpr const char* kLive = "data: {\"live\":true}\n\n";

class TheFeed : public testing::Test {
 protected:
  // Adds a page that keeps what it gets, and reads as many messages as `most`.
  std::vector<std::string>& addPage(std::size_t most = 1000000) {
    auto& got = m_pages.emplace_back();
    feed.add([&got, most](const auto& message) {
      if (got.size() == most) return false;
      got.push_back(*message);
      return true;
    });
    return got;
  }

  Feed feed;

 private:
  std::deque<std::vector<std::string>> m_pages;
};

TEST_F(TheFeed, TellsEachPage) {
  auto& one = addPage();
  auto& other = addPage();
  feed.tellEntries("{}");
  EXPECT_THAT(one, ElementsAre(kLive, ":\n\n", "data: {}\n\n"));
  EXPECT_THAT(other, ElementsAre(kLive, "data: {}\n\n"));
}

TEST_F(TheFeed, TellsALaterPageTheLatestStatesAndThenTheEntries) {
  feed.tellEntries("3");
  feed.tellState("a", "1");
  feed.tellState("a", "2");
  EXPECT_THAT(addPage(), ElementsAre("data: 2\n\n", "data: 3\n\n", kLive));
}

TEST_F(TheFeed, DoesNotRepeatAStateThatIsTheSame) {
  auto& page = addPage();
  feed.tellState("a", "1");
  feed.tellState("a", "1");
  EXPECT_THAT(page, ElementsAre(kLive, "data: 1\n\n"));
}

TEST_F(TheFeed, KeepsTheNewestEntries) {
  constexpr std::size_t kHalf = Feed::kKept / 2 - 8;  // with "data: " and two line ends
  for (const char each : {'a', 'b', 'c'}) feed.tellEntries(std::string(kHalf, each));
  EXPECT_THAT(addPage(), ElementsAre(StartsWith("data: b"), StartsWith("data: c"), kLive));
}

TEST_F(TheFeed, ForgetsAPageThatIsGoneWhenAnotherComes) {
  addPage(1);
  addPage();
  EXPECT_EQ(feed.pages(), 1U);
}

TEST_F(TheFeed, ForgetsAPageThatDoesNotRead) {
  addPage(2);
  feed.tellEntries("1");
  EXPECT_EQ(feed.pages(), 1U);
  feed.tellEntries("2");
  EXPECT_EQ(feed.pages(), 0U);
}

TEST_F(TheFeed, DoesNotKeepAPageThatIsGoneBeforeItHasTheStates) {
  feed.tellState("a", "1");
  EXPECT_THAT(addPage(0), IsEmpty());
  EXPECT_EQ(feed.pages(), 0U);
}

}  // namespace
}  // namespace panel
