#include "framework/BoundedLookup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "framework/FailedLookups.h"
#include "support/Becomes.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"

namespace host {
namespace {

using namespace std::chrono_literals;

// A resolver that answers when the test lets it.
class SlowResolver {
 public:
  std::optional<std::string> resolve() {
    ++m_asked;
    m_answer.wait();
    ++m_returned;
    return "192.0.2.1";
  }
  void answer() { m_answer.count_down(); }
  // Answers, and waits until so many lookups have returned.
  void finish(int lookups) {
    answer();
    EXPECT_TRUE(support::becomesTrue([&] { return m_returned == lookups; }));
  }
  [[nodiscard]] int asked() const { return m_asked; }

 private:
  std::latch m_answer{1};
  std::atomic<int> m_asked{0};
  std::atomic<int> m_returned{0};
};

// No test knows the failed names of another.
class BoundedLookup : public ::testing::Test {
 protected:
  BoundedLookup() { failedLookups().forgetAll(); }

  const std::shared_ptr<SlowResolver> m_resolver = std::make_shared<SlowResolver>();
  const Resolve m_slow = [resolver = m_resolver] { return resolver->resolve(); };
};

TEST_F(BoundedLookup, ReturnsTheAnswer) {
  EXPECT_EQ(boundedLookup("a.example", 20s, [] { return std::optional<std::string>("192.0.2.9"); }),
            "192.0.2.9");
  EXPECT_EQ(boundedLookup("b.example", 20s, [] { return std::optional<std::string>(); }),
            std::nullopt);
  const auto fail = []() -> std::optional<std::string> { throw std::runtime_error("on purpose"); };
  EXPECT_EQ(boundedLookup("c.example", 20s, fail), std::nullopt);
}

TEST_F(BoundedLookup, WaitsBrieflyWhileTheServerIsSilent) {
  const support::LogCapture log(3);
  EXPECT_EQ(boundedLookup("e.example", 1ms, m_slow), std::nullopt);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(boundedLookup("f.example", 20s, m_slow), std::nullopt);
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(waited, kShortWait);
  EXPECT_LT(waited, 10s);
  EXPECT_EQ(
      log.count("name lookup of \"e.example\": no answer within 1 ms; not asked again for 60 s"),
      1U);
  EXPECT_EQ(log.count("name lookup of \"f.example\": no answer within 100 ms (a short wait: the "
                      "name server is not answering); not asked again for 60 s"),
            1U);
  m_resolver->finish(2);
}

TEST_F(BoundedLookup, DoesNotProlongTheSilenceByAShortWait) {
  EXPECT_EQ(boundedLookup("k.example", 1ms, m_slow), std::nullopt);
  const auto later = std::chrono::steady_clock::now();
  EXPECT_TRUE(failedLookups().isSilent(later));
  EXPECT_EQ(boundedLookup("l.example", 2ms, m_slow), std::nullopt);
  EXPECT_FALSE(failedLookups().isSilent(later + FailedLookups::kKept));
  m_resolver->finish(2);
}

// Whether the server counts as silent after a slow lookup has ended with `answer`.
bool isSilentAfter(const Resolve& answer) {
  const auto resolver = std::make_shared<SlowResolver>();
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> thread = held;
  auto resolve = [resolver, answer, held = std::move(held)] {
    (void)resolver->resolve();
    return answer();
  };
  EXPECT_EQ(boundedLookup("m.example", 1ms, std::move(resolve)), std::nullopt);
  EXPECT_TRUE(failedLookups().isSilent(std::chrono::steady_clock::now()));
  resolver->answer();
  EXPECT_TRUE(support::becomesTrue([&] { return thread.expired(); }));
  return failedLookups().isSilent(std::chrono::steady_clock::now());
}

TEST_F(BoundedLookup, EndsTheSilenceAtAnyLateAnswer) {
  EXPECT_FALSE(isSilentAfter([] { return std::optional<std::string>("192.0.2.1"); }));
  failedLookups().forgetAll();
  EXPECT_FALSE(isSilentAfter([] { return std::nullopt; })) << "the answer is: no such name";
}

TEST_F(BoundedLookup, KeepsTheSilenceWhenTheResolverFailsLate) {
  EXPECT_TRUE(isSilentAfter(
      []() -> std::optional<std::string> { throw std::runtime_error("on purpose"); }));
}

TEST_F(BoundedLookup, WaitsBrieflyAfterANetworkChange) {
  EXPECT_EQ(boundedLookup("j.example", 1ms, m_slow), std::nullopt);
  for (int i = 0; i < 2; ++i) {
    failedLookups().allowAll();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(boundedLookup("j.example", 20s, m_slow), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
  }
  m_resolver->finish(3);
}

TEST_F(BoundedLookup, LooksANameUpAgainAfterALateAddress) {
  EXPECT_EQ(boundedLookup("g.example", 1ms, m_slow), std::nullopt);
  m_resolver->answer();
  const auto now = [] { return std::optional<std::string>("192.0.2.9"); };
  EXPECT_TRUE(
      support::becomesTrue([&] { return boundedLookup("g.example", 20s, now) == "192.0.2.9"; }));
}

TEST_F(BoundedLookup, RefusesMoreThanTheMostLookups) {
  const support::LogCapture log(3);
  for (int i = 0; i < 3 * kMostLookups; ++i) {
    EXPECT_EQ(boundedLookup(std::to_string(i) + ".example", 1ms, m_slow), std::nullopt);
  }
  EXPECT_LE(m_resolver->asked(), kMostLookups);
  EXPECT_PRED_FORMAT2(testing::IsSubstring,
                      "clockhost 3: name lookup refused: " + std::to_string(kMostLookups) +
                          " lookups are pending\n",
                      log.text());
  const auto now = std::chrono::steady_clock::now();
  EXPECT_TRUE(failedLookups().holds("0.example", now));
  EXPECT_FALSE(failedLookups().holds("23.example", now)) << "it was not looked up";
  m_resolver->finish(kMostLookups);
}

TEST_F(BoundedLookup, WorksAgainAfterALackOfMemory) {
  const std::string name = "h.example";
  const Resolve resolve = [] { return std::optional<std::string>("192.0.2.1"); };
  bool found = false;
  for (std::size_t after = 0; !found; ++after) {
    for (int i = 0; i <= kMostLookups; ++i) {
      const support::NoMemory none(after);
      found = boundedLookup(name, 20s, resolve).has_value();
      if (found == support::NoMemory::ranOut()) break;
    }
    ASSERT_NE(found, support::NoMemory::ranOut()) << after;
  }
}

TEST_F(BoundedLookup, LooksAFailedNameUpOnceAndLogsItOnce) {
  const support::LogCapture log(4);
  int asked = 0;
  const auto lookUp = [&](const char* name, const std::optional<std::string>& address) {
    return boundedLookup(name, 10s, [&asked, address] {
      ++asked;
      return address;
    });
  };
  for (int i = 0; i < 3; ++i) EXPECT_EQ(lookUp("nowhere.example", std::nullopt), std::nullopt);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(lookUp("somewhere.example", "192.0.2.1"), "192.0.2.1");
  EXPECT_EQ(lookUp("somewhere.example", "192.0.2.1"), "192.0.2.1");
  EXPECT_EQ(asked, 3) << "a name with an address is looked up each time";
  EXPECT_EQ(
      log.text(),
      "clockhost 3: name lookup of \"nowhere.example\": no address found; not asked again for "
      "60 s\n");
  failedLookups().forgetAll();
  EXPECT_EQ(lookUp("nowhere.example", "192.0.2.2"), "192.0.2.2");
}

}  // namespace
}  // namespace host
