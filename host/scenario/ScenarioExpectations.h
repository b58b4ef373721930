#pragma once

#include <functional>
#include <span>
#include <string>

namespace host {

class ScenarioDevice;

// Reads what follows `expect` into the step that checks it. Throws UsageError.
[[nodiscard]] std::function<void(ScenarioDevice& device)> readExpectation(
    std::span<const std::string> words);

}  // namespace host
