#pragma once

#include <chrono>
#include <functional>
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
// starts, unless keepGoing. Calls `ended` after each case. Returns the signal, SIGINT or SIGTERM,
// that ended the run early, or 0. REQUIRES: the process has one thread. Failure: host::Error when
// no process can be started.
[[nodiscard]] int runCases(Plugin& plugin, std::vector<ScenarioCase>& cases,
                           const SuiteOptions& options, const std::function<void()>& ended);

}  // namespace host
