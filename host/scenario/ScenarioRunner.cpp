#include "scenario/ScenarioRunner.h"

#include <optional>

#include "base/PrintableText.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDevice.h"

namespace host {
namespace {

std::string failureContext(const ScenarioDevice& device) {
  std::string lines;
  if (const auto now = device.timeText()) lines += "  time: " + *now + '\n';
  const auto& events = device.lastEvents();
  if (events.empty()) return lines;
  lines += "  last events:\n";
  for (const std::string& event : events) lines += "    " + escapedLine(event) + '\n';
  return lines;
}

}  // namespace

std::string runScenario(Plugin& plugin, const Scenario& scenario, const std::string& file) {
  int line = 0;
  std::string included;
  std::optional<ScenarioDevice> device;
  try {
    device.emplace(plugin, scenario.device);
    for (const ScenarioStep& step : scenario.steps) {
      line = step.line;
      included = step.included;
      step.run(*device);
    }
    return {};
  } catch (const std::exception& error) {
    const std::string place = line > 0 ? ':' + std::to_string(line) : "";
    const std::string failure =
        escapedLine(file) + place + ": " + included + escapedLine(error.what()) + '\n';
    return device ? failure + failureContext(*device) : failure;
  }
}

}  // namespace host
