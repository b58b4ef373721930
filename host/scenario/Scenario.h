#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/Device.h"
#include "verbs/UsageError.h"

namespace host {

class ScenarioDevice;

// An expectation that was not met, or a step that was refused: "expected ..., got ...".
struct ScenarioFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// One line of a scenario. run throws ScenarioFailure or host::Error.
struct ScenarioStep {
  int line;  // of the scenario itself
  std::function<void(ScenarioDevice& device)> run;
  std::string included{};  // "FILE:LINE: " for each file that includes lead to; else empty
};

// A scenario file as read. Immutable.
struct Scenario {
  DeviceOptions device;  // from the setup lines; `state` is set by ScenarioDevice
  std::vector<ScenarioStep> steps;
};

// A wrong line of the file: "LINE: what was wrong; what would be right".
struct ScenarioTextError : UsageError {
  using UsageError::UsageError;
};

}  // namespace host
