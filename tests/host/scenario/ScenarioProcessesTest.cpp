// Many scenarios, each in a process of its own.
#include "scenario/ScenarioProcesses.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>

#include "runtime/Plugin.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using End = ScenarioCase::End;

ScenarioCase caseThat(const std::string& file, std::function<void()> act) {
  ScenarioCase result{file, {}};
  result.scenario.steps.push_back({1, [act = std::move(act)](ScenarioDevice&) { act(); }});
  return result;
}

class ScenarioProcesses : public ::testing::Test {
 protected:
  ScenarioProcesses() { ::setenv("TMPDIR", m_folder.path().c_str(), 1); }
  ~ScenarioProcesses() override { ::unsetenv("TMPDIR"); }

  void run(const SuiteOptions& options) {
    EXPECT_EQ(runCases(m_plugin, m_cases, options, [this] { ++m_ended; }), 0);
  }
  std::ptrdiff_t count(End end) const {
    return std::count_if(m_cases.begin(), m_cases.end(),
                         [end](const ScenarioCase& each) { return each.end == end; });
  }

  const support::TemporaryFolder m_folder;  // a killed process leaves its files
  Plugin m_plugin{CLOCK_PLUGIN};
  std::vector<ScenarioCase> m_cases;
  int m_ended = 0;
};

TEST_F(ScenarioProcesses, AProcessThatDiesIsAFailureOfItsScenarioAlone) {
  m_cases.push_back(caseThat("killed", [] { ::raise(SIGKILL); }));
  m_cases.push_back(caseThat("left", [] { ::_exit(7); }));
  m_cases.push_back(caseThat("good", [] {}));
  run({.jobs = 2, .keepGoing = true});
  EXPECT_EQ(m_cases[0].failure, "killed: the telephone's process was ended by signal 9\n");
  EXPECT_EQ(m_cases[1].failure, "left: the telephone's process ended with status 7\n");
  EXPECT_EQ(m_cases[2].failure, "");
  EXPECT_EQ(count(End::failed), 2);
  EXPECT_EQ(count(End::passed), 1);
  EXPECT_EQ(m_ended, 3);
}

// Ctrl-C reaches each process, and the runner decides what it means.
TEST_F(ScenarioProcesses, AProcessLeavesAnInterruptionToTheRunner) {
  m_cases.push_back(caseThat("interrupted", [] {
    ::raise(SIGINT);
    ::raise(SIGTERM);
  }));
  run({});
  EXPECT_EQ(m_cases[0].failure, "");
}

// A case that runs already is finished.
TEST_F(ScenarioProcesses, StartsNoFurtherCaseAfterAFailure) {
  for (int i = 0; i < 6; ++i) {
    m_cases.push_back(caseThat("bad", [] { throw ScenarioFailure("expected x, got y"); }));
  }
  run({.jobs = 2});
  EXPECT_EQ(count(End::failed), 2);
  EXPECT_EQ(count(End::notRun), 4);
  EXPECT_EQ(m_cases.front().failure, "bad:1: expected x, got y\n");
}

TEST_F(ScenarioProcesses, NoMoreThanTheJobsRunAtATime) {
  constexpr std::size_t kLong = 100'000;  // more than a pipe holds
  for (int i = 0; i < 5; ++i) {
    m_cases.push_back(caseThat("x", [folder = m_folder.path()] {
      const auto folders = std::distance(std::filesystem::directory_iterator(folder), {});
      throw ScenarioFailure(std::string(kLong, folders > 2 ? '!' : '.'));
    }));
  }
  run({.jobs = 2, .keepGoing = true});
  for (const ScenarioCase& each : m_cases) {
    EXPECT_EQ(each.failure, "x:1: " + std::string(kLong, '.') + '\n');
  }
}

}  // namespace
}  // namespace host
