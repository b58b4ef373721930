// The report on many scenarios, and the stream of each part.
#include "scenario/ScenarioReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace host {
namespace {

using std::chrono::milliseconds;
using End = ScenarioCase::End;

std::vector<ScenarioCase> threeCases() {
  return {
      {"a", {}, End::passed, "", milliseconds(1234)},
      {"b\n\"<&", {}, End::failed, "b:1: expected <\"x\">, got &\n  time: t\n", milliseconds(7)},
      {"c", {}}};
}

TEST(ScenarioReport, TheSummaryLeavesOutWhatDidNotHappen) {
  std::vector<ScenarioCase> cases = threeCases();
  EXPECT_EQ(summaryOf(cases), "3 scenarios: 1 passed, 1 failed, 1 not run");
  cases.resize(1);
  EXPECT_EQ(summaryOf(cases), "1 scenario: 1 passed");
  EXPECT_EQ(summaryOf({}), "0 scenarios: 0 passed");
}

TEST(ScenarioReport, JunitHasEachCaseWithItsFailure) {
  EXPECT_EQ(junitText(threeCases()),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<testsuite name=\"scenarios\" tests=\"3\" failures=\"1\" errors=\"0\" skipped=\"1\" "
            "time=\"1.241\">\n"
            "  <testcase classname=\"scenario\" name=\"a\" time=\"1.234\"/>\n"
            "  <testcase classname=\"scenario\" name=\"b\\n&quot;&lt;&amp;\" time=\"0.007\">\n"
            "    <failure message=\"b:1: expected &lt;&quot;x&quot;&gt;, got &amp;\">b:1: expected "
            "&lt;&quot;x&quot;&gt;, got &amp;\n  time: t\n</failure>\n"
            "  </testcase>\n"
            "  <testcase classname=\"scenario\" name=\"c\" time=\"0.000\"><skipped/></testcase>\n"
            "</testsuite>\n");
}

// A later case that ends first is printed after the earlier ones.
TEST(ScenarioReport, PrintsCasesInTheirOrder) {
  std::vector<ScenarioCase> cases = threeCases();
  cases[0].end = End::notRun;
  std::ostringstream out;
  std::ostringstream err;
  ScenarioReport report(cases, false, false, out, err);
  report.update();
  EXPECT_EQ(err.str(), "");
  cases[0].end = End::passed;
  report.update();
  EXPECT_EQ(err.str(), cases[1].failure);
  report.finish();
  EXPECT_EQ(err.str(), cases[1].failure);
  EXPECT_EQ(out.str(), "3 scenarios: 1 passed, 1 failed, 1 not run\n");
}

// An unescaped # would begin a directive, such as SKIP.
TEST(ScenarioReport, TapEscapesAHashInTheNameOfAFile) {
  const std::vector<ScenarioCase> cases = {{"a # SKIP", {}, End::passed}};
  std::ostringstream out;
  ScenarioReport report(cases, true, false, out, out);
  report.finish();
  EXPECT_THAT(out.str(), testing::HasSubstr("\nok 1 - a \\# SKIP\n"));
}

TEST(ScenarioReport, OneCaseHasNoSummary) {
  const std::vector<ScenarioCase> cases = {threeCases().front()};
  std::ostringstream out;
  ScenarioReport report(cases, false, false, out, out);
  report.update();
  report.finish();
  EXPECT_EQ(out.str(), "");
}

TEST(ScenarioReport, ProgressIsALineThatIsReplaced) {
  std::vector<ScenarioCase> cases = threeCases();
  cases[0].end = cases[1].end = End::notRun;
  std::ostringstream out;
  std::ostringstream err;
  ScenarioReport report(cases, false, true, out, err);
  EXPECT_EQ(err.str(), "0 of 3 scenarios");
  err.str("");
  cases[0].end = End::passed;
  cases[1].end = End::failed;
  report.update();
  EXPECT_THAT(err.str(), testing::StartsWith("\r\x1B[K" + cases[1].failure +
                                             "2 of 3 scenarios, 1 failed, 0:"));
  err.str("");
  report.finish();
  EXPECT_EQ(err.str(), "\r\x1B[K");
}

}  // namespace
}  // namespace host
