#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <span>
#include <string>

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
  void hideProgress();

  const std::span<const ScenarioCase> m_cases;
  const bool m_tap;
  const bool m_progress;
  std::ostream& m_out;
  std::ostream& m_err;
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
  std::size_t m_printed = 0;  // cases
};

// "28 scenarios: 26 passed, 1 failed, 1 not run"
[[nodiscard]] std::string summaryOf(std::span<const ScenarioCase> cases);

// How long the cases that are left will take, from those that have ended; empty: not known.
[[nodiscard]] std::string timeLeft(std::size_t done, std::size_t all,
                                   std::chrono::steady_clock::duration since);

// The cases as a JUnit report.
[[nodiscard]] std::string junitText(std::span<const ScenarioCase> cases);

}  // namespace host
