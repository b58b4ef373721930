#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "scenario/Scenario.h"
#include "scenario/SuiteOptions.h"

namespace host {

class Plugin;

// One file of a suite, and how it ended.
struct ScenarioCase {
  enum class End { notRun, passed, failed };

  std::string file;
  Scenario scenario;
  End end = End::notRun;
  std::string failure{};  // lines
  std::chrono::milliseconds took{};
};

// Runs the cases, each in a process of its own, `jobs` at a time. After a failure no further case
// starts, unless keepGoing. Calls `ended` after each case. REQUIRES: the process has one thread.
// Failure: host::Error when no process can be started.
void runCases(Plugin& plugin, std::vector<ScenarioCase>& cases, const SuiteOptions& options,
              const std::function<void()>& ended);

enum SuiteStatus : int { suitePassed = 0, suiteFailed = 1, suiteWrong = 2 };

// Reads all files, runs them and reports: failures on `err`, or with TAP on `out`; for several
// files a summary on `out`, and on a terminal a line of progress on `err`. suiteWrong: a file could
// not be understood, and nothing was run. Failure: host::Error.
[[nodiscard]] SuiteStatus runScenarioSuite(const std::filesystem::path& plugin,
                                           const SuiteOptions& options, std::ostream& out,
                                           std::ostream& err, bool onTerminal);

}  // namespace host
