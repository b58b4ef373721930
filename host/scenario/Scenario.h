#pragma once

#include <functional>
#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/Device.h"

namespace host {

class ScenarioDevice;

// An expectation that was not met, or a step that was refused: "expected ..., got ...".
struct ScenarioFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// One line of a scenario. run throws ScenarioFailure or host::Error.
struct ScenarioStep {
  int line;
  std::function<void(ScenarioDevice& device)> run;
};

// A scenario file as read. Immutable.
struct Scenario {
  DeviceOptions device;  // from the setup lines; `state` is set by ScenarioDevice
  std::vector<ScenarioStep> steps;
};

// A wrong line of the file: "LINE: what was wrong; what would be right".
struct ScenarioTextError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads a whole scenario. Throws ScenarioTextError for the first wrong line.
[[nodiscard]] Scenario readScenario(std::istream& text);

}  // namespace host
