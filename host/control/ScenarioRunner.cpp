#include "control/ScenarioRunner.h"

#include <fstream>
#include <ostream>

#include "control/Scenario.h"
#include "control/ScenarioDevice.h"
#include "platform/ShownText.h"

namespace host {
namespace {

ScenarioRunner::Status tellUnreadable(const std::filesystem::path& file, std::ostream& errors) {
  errors << escapedLine(file.string()) << ": cannot be read; a scenario is a text file\n";
  return ScenarioRunner::wrongFile;
}

}  // namespace

ScenarioRunner::ScenarioRunner(Plugin& plugin, std::ostream& errors)
    : m_plugin(plugin), m_errors(errors) {}

ScenarioRunner::Status ScenarioRunner::run(const std::filesystem::path& file) {
  std::ifstream text(file);
  if (!text || std::filesystem::is_directory(file)) {
    return tellUnreadable(file, m_errors);
  }
  int line = 0;
  try {
    const Scenario scenario = readScenario(text);
    if (text.bad()) return tellUnreadable(file, m_errors);
    ScenarioDevice device(m_plugin, scenario.device);
    for (const ScenarioStep& step : scenario.steps) {
      line = step.line;
      step.run(device);
    }
    return passed;
  } catch (const ScenarioTextError& error) {
    m_errors << escapedLine(file.string()) << ':' << escapedLine(error.what()) << '\n';
    return wrongFile;
  } catch (const std::exception& error) {
    m_errors << escapedLine(file.string()) << ':' << line << ": " << escapedLine(error.what())
             << '\n';
    return failed;
  }
}

}  // namespace host
