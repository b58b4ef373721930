#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <istream>
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

// Returns the text of a file that an `include` line names. Throws UsageError.
using IncludedText = std::function<std::string(const std::filesystem::path& file)>;

// How deep files may include files, and how many may be included in all. More is a mistake, and
// would fill the memory.
inline constexpr std::size_t kDeepestInclude = 8;
inline constexpr std::size_t kMostIncludes = 1000;

// Reads a whole scenario. file: included files are relative to it. Throws ScenarioTextError for the
// first wrong line.
[[nodiscard]] Scenario readScenario(std::istream& text, const std::filesystem::path& file = {},
                                    const IncludedText& included = {});

}  // namespace host
