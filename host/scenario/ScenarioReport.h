#pragma once

#include <cstddef>
#include <iosfwd>
#include <span>
#include <string>

#include "base/ProgressLine.h"
#include "scenario/ScenarioProcesses.h"

namespace host {

// Prints how the cases of a suite end, in the order of their files. Owner: the suite; cases and
// streams outlive it. Thread: its caller's.
class ScenarioReport {
 public:
  // progress: shows on `err`, on one line that is replaced, how many cases have ended.
  ScenarioReport(std::span<const ScenarioCase> cases, bool tap, bool progress, std::ostream& out,
                 std::ostream& err);

  void update();  // after each case
  void finish();  // at the end: cases that were not run, and the summary

 private:
  void print(const ScenarioCase& each, std::size_t number);
  void showProgress();

  const std::span<const ScenarioCase> m_cases;
  const bool m_tap;
  std::ostream& m_out;
  std::ostream& m_err;
  ProgressLine m_progress;
  std::size_t m_printed = 0;  // cases
};

// "28 scenarios: 26 passed, 1 failed, 1 not run"
[[nodiscard]] std::string summaryOf(std::span<const ScenarioCase> cases);

// The cases as a JUnit report.
[[nodiscard]] std::string junitText(std::span<const ScenarioCase> cases);

}  // namespace host
