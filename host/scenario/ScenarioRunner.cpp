#include "scenario/ScenarioRunner.h"

#include <array>
#include <fstream>
#include <ostream>
#include <sstream>

#include "base/PrintableText.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDevice.h"

namespace host {
namespace {

// Larger than any scenario. A file without an end, such as /dev/zero, would fill the memory.
constexpr std::size_t kMostMebibytes = 16;
constexpr std::size_t kMostText = kMostMebibytes * 1024 * 1024;

// The whole text; if it is too long, a beginning of more than kMostText bytes.
std::string textOf(std::istream& stream) {
  std::string text;
  std::array<char, 65536> part;
  while (text.size() <= kMostText && stream) {
    stream.read(part.data(), part.size());
    text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
  }
  return text;
}

ScenarioRunner::Status refuseUnreadable(const std::filesystem::path& file, std::ostream& errors) {
  errors << escapedLine(file.string()) << ": cannot be read; a scenario is a text file\n";
  return ScenarioRunner::wrongFile;
}

ScenarioRunner::Status refuseTooLarge(const std::filesystem::path& file, std::ostream& errors) {
  errors << escapedLine(file.string()) << ": is too large; a scenario has at most "
         << kMostMebibytes << " MiB\n";
  return ScenarioRunner::wrongFile;
}

}  // namespace

ScenarioRunner::ScenarioRunner(Plugin& plugin, std::ostream& errors)
    : m_plugin(plugin), m_errors(errors) {}

ScenarioRunner::Status ScenarioRunner::run(const std::filesystem::path& file) {
  std::ifstream stream(file);
  const std::string whole = textOf(stream);
  if (!stream.is_open() || stream.bad() || std::filesystem::is_directory(file)) {
    return refuseUnreadable(file, m_errors);
  }
  if (whole.size() > kMostText) return refuseTooLarge(file, m_errors);
  int line = 0;
  try {
    std::istringstream text(whole);
    const Scenario scenario = readScenario(text);
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
    m_errors << escapedLine(file.string());
    if (line > 0) m_errors << ':' << line;
    m_errors << ": " << escapedLine(error.what()) << '\n';
    return failed;
  }
}

}  // namespace host
