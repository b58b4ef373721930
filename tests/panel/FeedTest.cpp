#include "server/Feed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace panel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
  feed.tellEntry("{}");
  EXPECT_THAT(one, ElementsAre("data: {}\n\n"));
  EXPECT_THAT(other, ElementsAre("data: {}\n\n"));
}

TEST_F(TheFeed, TellsALaterPageTheLatestStatesAndThenTheEntries) {
  feed.tellEntry("3");
  feed.tellState("a", "1");
  feed.tellState("a", "2");
  EXPECT_THAT(addPage(), ElementsAre("data: 2\n\n", "data: 3\n\n"));
}

TEST_F(TheFeed, DoesNotRepeatAStateThatIsTheSame) {
  auto& page = addPage();
  feed.tellState("a", "1");
  feed.tellState("a", "1");
  EXPECT_THAT(page, ElementsAre("data: 1\n\n"));
}

TEST_F(TheFeed, KeepsTheNewestEntries) {
  for (std::size_t i = 0; i <= Feed::kKept; ++i) feed.tellEntry(std::to_string(i));
  const auto& page = addPage();
  EXPECT_EQ(page.size(), Feed::kKept);
  EXPECT_EQ(page.front(), "data: 1\n\n");
}

TEST_F(TheFeed, ForgetsAPageThatDoesNotRead) {
  addPage(1);
  feed.tellEntry("1");
  EXPECT_EQ(feed.pages(), 1U);
  feed.tellEntry("2");
  EXPECT_EQ(feed.pages(), 0U);
}

TEST_F(TheFeed, DoesNotKeepAPageThatIsGoneBeforeItHasTheStates) {
  feed.tellState("a", "1");
  EXPECT_THAT(addPage(0), IsEmpty());
  EXPECT_EQ(feed.pages(), 0U);
}

}  // namespace
}  // namespace panel
