#include "Bench.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"
#include "verbs/UsageError.h"

namespace {

using bench::Bound;
using bench::Figure;
using bench::Sample;
using Kind = Bound::Kind;

int g_calls = 0;  // of measureRounds, measureDisturbed and measureBroken

// Ratios 1, 3, 5: the median is one that no other statistic finds.
Sample measureRounds() {
  constexpr double kValues[] = {2, 6, 50};
  constexpr double kBaselines[] = {2, 2, 10};
  const int round = g_calls++ % 3;
  return {kValues[round], kBaselines[round]};
}
// Two repetitions are disturbed, and none after them.
Sample measureDisturbed() {
  return {g_calls++ < 2 ? 9.0 : 1.0, {}};
}
Sample measureTwo() {
  return {2, {}};
}
Sample measureMore() {
  return {6, 2};
}
Sample measureBroken() {
  ++g_calls;
  throw std::runtime_error("the disk has gone");
}
Sample measureInfinity() {
  return {std::numeric_limits<double>::infinity(), {}};
}
Sample measureBytes() {
  throw std::runtime_error("no answer but \xFF");
}

const std::vector<Figure> kFigures{
    {"three", "three times", "once", "us", {Kind::ratioAtMost, 2.5}, 3, measureRounds},
    {"disturbed", "disturbed at first", "", "us", {Kind::atMost, 2}, 2, measureDisturbed},
    {"count", "counted", "", "", {Kind::exactly, 1, false}, 2, measureTwo},
    {"more", "four more", "two", "us", {Kind::differenceAtMost, 4}, 2, measureMore},
    {"broken", "broken", "", "", {Kind::atMost, 1}, 5, measureBroken},
    {"info", "information", "once", "us", {Kind::none, 0}, 2, measureMore},
    {"lost", "lost", "", "us", {Kind::atMost, 1}, 2, measureInfinity},
    {"bytes", "no text", "", "", {Kind::atMost, 1}, 2, measureBytes}};

class BenchRun : public testing::Test {
 protected:
  BenchRun() { g_calls = 0; }

  int run(const std::vector<std::string>& words) {
    return bench::run(words, kFigures, folder / "bench.json", tableText);
  }
  std::string usageErrorOf(const std::vector<std::string>& words) {
    try {
      static_cast<void>(run(words));
    } catch (const host::UsageError& error) {
      return error.what();
    }
    return "";
  }

  [[nodiscard]] nlohmann::json json(const std::string& name = "bench.json") const {
    return nlohmann::json::parse(std::ifstream(folder / name));
  }
  [[nodiscard]] std::string table() const { return tableText.str(); }
  [[nodiscard]] bool shows(const std::string& words) const {
    return table().find(words) != std::string::npos;
  }

  const support::TemporaryFolder folder;
  std::ostringstream tableText;
};

TEST_F(BenchRun, ExitsWithOneWhenABoundIsExceeded) {
  EXPECT_EQ(run({"--only", "three"}), 1);
  EXPECT_TRUE(shows("<= 2.5 x  OVER")) << table();
  EXPECT_FALSE(json()["ok"]);
  EXPECT_FALSE(json()["figures"][0]["ok"]);
}

TEST_F(BenchRun, ExitsWithZeroWhenTheWidenedBoundIsMet) {
  EXPECT_EQ(run({"--only", "three", "--factor", "1.5"}), 0);
  EXPECT_TRUE(shows("<= 3.75 x  ok")) << table();
  EXPECT_TRUE(json()["ok"]);
  EXPECT_DOUBLE_EQ(json()["factor"], 1.5);
  EXPECT_EQ(json()["figures"][0]["bound"], "<= 3.75 x");
}

TEST_F(BenchRun, MeasuresAgainWhenABoundIsExceeded) {
  EXPECT_EQ(run({"--only", "disturbed"}), 0);
  EXPECT_EQ(g_calls, 4);
  EXPECT_TRUE(shows("ok, measured 2 times\n")) << table();
  EXPECT_EQ(json()["figures"][0]["rounds"], 2);
  EXPECT_DOUBLE_EQ(json()["figures"][0]["value"], 1);
}

TEST_F(BenchRun, MeasuresTenTimesBeforeABoundIsSaidToBeExceeded) {
  EXPECT_EQ(run({"--only", "three"}), 1);
  EXPECT_EQ(g_calls, 30);
  EXPECT_TRUE(shows("OVER, measured 10 times\n")) << table();
}

TEST_F(BenchRun, DoesNotWidenACount) {
  EXPECT_EQ(run({"--only", "count", "--factor", "100"}), 1);
}

TEST_F(BenchRun, WritesTheMediansOfTheRepetitions) {
  EXPECT_EQ(run({"--only", "three", "--factor", "2"}), 0);
  EXPECT_EQ(g_calls, 3);
  const auto row = json()["figures"][0];
  EXPECT_EQ(row["name"], "three");
  EXPECT_EQ(row["unit"], "us");
  EXPECT_DOUBLE_EQ(row["value"], 6);
  EXPECT_EQ(row["baseline"], "once");
  EXPECT_DOUBLE_EQ(row["baselineValue"], 2);
  EXPECT_DOUBLE_EQ(row["ratio"], 3);
  EXPECT_NEAR(row["noise"], 2.0 / 3, 1e-9);
}

TEST_F(BenchRun, ComparesByTheDifferenceWhereTheBoundLimitsIt) {
  EXPECT_EQ(run({"--only", "more"}), 0);
  EXPECT_TRUE(shows("+ 4 ")) << table();
  EXPECT_DOUBLE_EQ(json()["figures"][0]["difference"], 4);
}

TEST_F(BenchRun, MeasuresTheOthersWhenOneFails) {
  EXPECT_EQ(run({}), 1);
  const auto figures = json()["figures"];
  ASSERT_EQ(figures.size(), kFigures.size());
  EXPECT_DOUBLE_EQ(figures[0]["value"], 6);
  EXPECT_EQ(figures[4]["failure"], "the disk has gone");
  EXPECT_FALSE(figures[4]["ok"]);
  EXPECT_FALSE(figures[4].contains("value"));
  EXPECT_TRUE(shows("FAILED: the disk has gone")) << table();
  EXPECT_EQ(figures[7]["failure"], "no answer but \uFFFD") << "bytes that are not UTF-8";
}

TEST_F(BenchRun, DoesNotRepeatAFailure) {
  EXPECT_EQ(run({"--only", "broken"}), 1);
  EXPECT_EQ(g_calls, 1);
  EXPECT_FALSE(json()["ok"]);
}

TEST_F(BenchRun, GivesNoVerdictWithoutABound) {
  EXPECT_EQ(run({"--only", "info"}), 0);
  EXPECT_TRUE(shows("-  info\n")) << table();
  EXPECT_DOUBLE_EQ(json()["figures"][0]["value"], 6);
  EXPECT_FALSE(json()["figures"][0].contains("ok"));
}

TEST_F(BenchRun, FailsAFigureThatIsInfinite) {
  EXPECT_EQ(run({"--only", "lost"}), 1);
  EXPECT_TRUE(shows("inf us")) << table();
  EXPECT_TRUE(shows("OVER")) << table();
}

TEST_F(BenchRun, WritesTheJsonToTheFileThatIsNamed) {
  const std::string file = folder / "other.json";
  EXPECT_EQ(run({"--only", "three", "--json", file.c_str()}), 1);
  EXPECT_TRUE(shows("other.json\n")) << table();
  EXPECT_FALSE(json("other.json")["ok"]);
  EXPECT_FALSE(std::filesystem::exists(folder / "bench.json"));
}

TEST_F(BenchRun, WritesCommitProcessorAndDateToTheJson) {
  EXPECT_EQ(run({"--only", "info", "--commit", "abc"}), 0);
  EXPECT_EQ(json()["commit"], "abc");
  EXPECT_TRUE(json()["machine"].is_string());
  EXPECT_TRUE(std::regex_match(json()["date"].get<std::string>(),
                               std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ)")));
}

TEST_F(BenchRun, ThrowsBeforeItMeasuresWhenTheJsonCannotBeWritten) {
  const std::string file = folder / "none/other.json";
  EXPECT_THROW(run({"--only", "three", "--json", file.c_str()}), std::runtime_error);
  EXPECT_EQ(g_calls, 0);
}

TEST_F(BenchRun, RefusesAWrongFactor) {
  for (const char* const factor : {"nan", "inf", "-inf", "0", "0.5", "101", "much"}) {
    EXPECT_EQ(usageErrorOf({"--only", "three", "--factor", factor}),
              "--factor: \"" + std::string(factor) +
                  "\" is not a number from 1 to 100; `bench --help` lists the options");
  }
}

TEST_F(BenchRun, RefusesAnUnknownName) {
  EXPECT_EQ(usageErrorOf({"--only", "tree"}),
            "--only: \"tree\" is not a figure; did you mean \"three\"?");
  EXPECT_FALSE(std::filesystem::exists(folder / "bench.json"));
}

TEST_F(BenchRun, ShowsItsProgress) {
  std::ostringstream progress;
  EXPECT_EQ(bench::run(std::vector<std::string>{"--only", "info", "--only=count"}, kFigures,
                       folder / "bench.json", tableText, &progress),
            1);
  EXPECT_TRUE(std::regex_match(
      progress.str(),
      std::regex("0 of 2 figures\r\x1B\\[K1 of 2 figures, 0:0[0-9] left\r\x1B\\[K")))
      << progress.str();
}

// ./dev bench --compare reads the list.
TEST_F(BenchRun, HelpListsTheFigures) {
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_TRUE(shows("--only NAME")) << table();
  EXPECT_TRUE(shows("{three,disturbed,count,more,broken,info,lost,bytes}")) << table();
}

}  // namespace
