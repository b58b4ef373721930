#include "Bench.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace {

using bench::Bound;
using bench::Figure;
using bench::Findings;
using Kind = Bound::Kind;

int g_pairs = 0;  // how often measurePair has run

void measureThree(Findings& findings) {
  findings["three"] = {6, 2, 3};
}
void measureCount(Findings& findings) {
  findings["count"] = bench::alone(2);
}
void measurePair(Findings&) {
  ++g_pairs;
  throw std::runtime_error("the disk has gone");
}
void measureNothing(Findings&) {}
void measureTold(Findings& findings) {
  findings["told"] = {6, 2, 3};
}
void measureLost(Findings& findings) {
  findings["lost"] = bench::alone(std::numeric_limits<double>::infinity());
}
void measureBytes(Findings&) {
  throw std::runtime_error("no answer but \xFF");
}
void measureSize(Findings&) {
  throw std::runtime_error("the size is not told");
}

const std::vector<Figure> kFigures{
    {"three", "three times", "once", "us", {Kind::ratioAtMost, 2.5}, measureThree},
    {"count", "counted", "", "", {Kind::between, 1, 1, false}, measureCount},
    {"one", "one of a pair", "", "", {Kind::atMost, 1}, measurePair},
    {"other", "the other", "", "", {Kind::atMost, 1}, measurePair},
    {"forgotten", "forgotten", "", "", {Kind::atMost, 1}, measureNothing},
    {"told", "told alone", "once", "us", {Kind::none, 0}, measureTold},
    {"lost", "lost", "", "us", {Kind::atMost, 1}, measureLost},
    {"bytes", "no text", "", "", {Kind::atMost, 1}, measureBytes},
    {"arm-size", "size", "", "bytes", {Kind::atMost, 65536, 0, false}, measureSize}};

class BenchRun : public testing::Test {
 protected:
  int run(std::vector<const char*> words) {
    words.insert(words.begin(), "bench");
    const bench::Bench bench(kFigures, m_folder / "bench.json", m_table);
    return bench.run(static_cast<int>(words.size()), words.data());
  }

  [[nodiscard]] nlohmann::json json(const std::string& name = "bench.json") const {
    return nlohmann::json::parse(std::ifstream(m_folder / name));
  }
  [[nodiscard]] std::string table() const { return m_table.str(); }
  [[nodiscard]] bool tells(const std::string& words) const {
    return table().find(words) != std::string::npos;
  }

  const support::TemporaryFolder m_folder;
  std::ostringstream m_table;
};

TEST_F(BenchRun, EndsWithOneWhenABoundIsNotHeld) {
  EXPECT_EQ(run({"--only", "three"}), 1);
  EXPECT_TRUE(tells("3.00 x   <= 2.5 x  OVER")) << table();
  EXPECT_FALSE(json()["ok"]);
  EXPECT_FALSE(json()["figures"][0]["ok"]);
}

TEST_F(BenchRun, EndsWithZeroWhenTheWidenedBoundIsHeld) {
  EXPECT_EQ(run({"--only", "three", "--factor", "1.5"}), 0);
  EXPECT_TRUE(tells("3.00 x  <= 3.75 x  ok")) << table();
  EXPECT_TRUE(json()["ok"]);
  EXPECT_DOUBLE_EQ(json()["factor"], 1.5);
  EXPECT_EQ(json()["figures"][0]["bound"], "<= 3.75 x");
}

TEST_F(BenchRun, HoldsCountsToTheSameWhateverTheFactor) {
  EXPECT_EQ(run({"--only", "count", "--factor", "100"}), 1);
}

TEST_F(BenchRun, TellsWhatWasMeasured) {
  EXPECT_EQ(run({"--only", "three"}), 1);
  const auto row = json()["figures"][0];
  EXPECT_EQ(row["name"], "three");
  EXPECT_EQ(row["unit"], "us");
  EXPECT_DOUBLE_EQ(row["value"], 6);
  EXPECT_EQ(row["floor"], "once");
  EXPECT_DOUBLE_EQ(row["floorValue"], 2);
  EXPECT_DOUBLE_EQ(row["ratio"], 3);
}

TEST_F(BenchRun, LosesNoFigureWhenAnotherCannotBeMeasured) {
  g_pairs = 0;
  EXPECT_EQ(run({}), 1);
  const auto figures = json()["figures"];
  ASSERT_EQ(figures.size(), kFigures.size());
  EXPECT_DOUBLE_EQ(figures[0]["value"], 6);
  for (const std::size_t failed : {2U, 3U}) {
    EXPECT_EQ(figures[failed]["failure"], "the disk has gone");
    EXPECT_FALSE(figures[failed]["ok"]);
    EXPECT_FALSE(figures[failed].contains("value"));
  }
  EXPECT_EQ(g_pairs, 1) << "what failed is not tried for each of its figures";
  EXPECT_TRUE(tells("FAILED: the disk has gone")) << table();
}

TEST_F(BenchRun, EndsWithOneWhenAFigureCannotBeMeasured) {
  EXPECT_EQ(run({"--only", "one"}), 1);
  EXPECT_FALSE(json()["ok"]);
}

TEST_F(BenchRun, EndsWithOneWhenAMeasureForgetsAFigure) {
  EXPECT_EQ(run({"--only", "forgotten"}), 1);
  EXPECT_EQ(json()["figures"][0]["failure"], "it was not found");
}

TEST_F(BenchRun, PassesNoVerdictOnWhatIsHeldToNothing) {
  EXPECT_EQ(run({"--only", "told"}), 0);
  EXPECT_TRUE(tells("-  told\n")) << table();
  EXPECT_FALSE(tells("ok")) << table();
  EXPECT_DOUBLE_EQ(json()["figures"][0]["value"], 6);
  EXPECT_FALSE(json()["figures"][0].contains("ok"));
}

TEST_F(BenchRun, WritesTheJsonWhateverBytesAFailureTells) {
  EXPECT_EQ(run({"--only", "bytes", "--only", "count"}), 1);
  EXPECT_EQ(json()["figures"][1]["failure"], "no answer but \uFFFD");
  EXPECT_DOUBLE_EQ(json()["figures"][0]["value"], 2);
}

TEST_F(BenchRun, TakesTheSizeThatItIsTold) {
  EXPECT_EQ(run({"--only", "arm-size", "--arm-size", "65536"}), 0);
  EXPECT_EQ(run({"--only", "arm-size", "--arm-size", "65537"}), 1);
  EXPECT_EQ(run({"--only", "arm-size"}), 1);
}

TEST_F(BenchRun, SaysWhereTheJsonIs) {
  EXPECT_EQ(run({"--only", "three"}), 1);
  EXPECT_TRUE(tells("as JSON in ")) << table();
  EXPECT_TRUE(tells("bench.json\n")) << table();
}

TEST_F(BenchRun, WritesTheJsonWhereItIsTold) {
  const std::string file = m_folder / "other.json";
  EXPECT_EQ(run({"--only", "three", "--json", file.c_str()}), 1);
  EXPECT_FALSE(json("other.json")["ok"]);
  EXPECT_FALSE(std::filesystem::exists(m_folder / "bench.json"));
}

TEST_F(BenchRun, ThrowsBeforeItMeasuresWhenTheJsonCannotBeWritten) {
  const std::string file = m_folder / "none/other.json";
  g_pairs = 0;
  EXPECT_THROW(run({"--only", "one", "--json", file.c_str()}), std::runtime_error);
  EXPECT_EQ(g_pairs, 0);
}

TEST_F(BenchRun, RefusesNumbersThatAreNone) {
  testing::internal::CaptureStderr();
  for (const char* const number : {"nan", "inf", "-inf", "0", "much"}) {
    EXPECT_EQ(run({"--only", "three", "--factor", number}), 2) << number;
    EXPECT_EQ(run({"--only", "arm-size", "--arm-size", number}), 2) << number;
  }
  testing::internal::GetCapturedStderr();
}

TEST_F(BenchRun, TellsAFigureThatIsNoNumber) {
  EXPECT_EQ(run({"--only", "lost"}), 1);
  EXPECT_TRUE(tells("inf us")) << table();
  EXPECT_TRUE(tells("OVER")) << table();
}

TEST_F(BenchRun, RefusesWordsThatItDoesNotKnow) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(run({"--only", "four"}), 2);
  EXPECT_EQ(run({"--factor", "0.5"}), 2);
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("no figure \"four\"; there are three, count,"), std::string::npos) << said;
  EXPECT_FALSE(std::filesystem::exists(m_folder / "bench.json"));
}

}  // namespace
