// The text of a scenario: it is read as a whole, or refused in one line that names the first wrong
// line. Quoted words are read unchanged, and a scenario reaches only the device's own files.

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <vector>

#include "fuzz/Property.h"
#include "scenario/ScenarioParser.h"
#include "scenario/ScenarioPaths.h"
#include "scenario/ScenarioWords.h"
#include "verbs/UsageError.h"

namespace {

using fuzz::hold;

std::string quoted(const std::string& word) {
  std::string text = "\"";
  for (const char c : word) {
    if (c == '"' || c == '\\') text += '\\';
    text += c == '\n' ? "\\n" : std::string(1, c);
  }
  return text + '"';
}

// An accepted path is inside the device's folders, however it is written.
void holdPath(const std::string& path) {
  try {
    host::requireDevicePath(path);
  } catch (const host::UsageError&) {
    return;
  }
  const std::string normal = std::filesystem::path(path).lexically_normal().string();
  hold(normal.starts_with("/data/") || normal.starts_with("/tmp/votk/"),
       "a scenario reaches only the device's files", path);
}

void holdWords(const std::string& line) {
  std::vector<std::string> words;
  try {
    words = host::splitScenarioLine(line);
  } catch (const host::UsageError& error) {
    return hold(fuzz::isShortLine(error.what()), "a refusal is one line", error.what());
  }
  std::string again;
  for (const std::string& word : words) again += quoted(word) + ' ';
  hold(host::splitScenarioLine(again) == words, "quoted words are read unchanged", line);
  for (const std::string& word : words) holdPath(word);
}

void holdSteps(const host::Scenario& scenario, int lines) {
  int last = 0;
  for (const host::ScenarioStep& step : scenario.steps) {
    hold(step.line > last && step.line <= lines, "steps are in the order of their lines");
    hold(step.run != nullptr, "a step can be run");
    last = step.line;
  }
  const std::string& mac = scenario.device.mac;
  hold(mac.empty() || mac.size() == 12, "a MAC address has 12 digits", mac);
  hold(!scenario.device.at || scenario.device.at->size() == 25, "the start time is a UTC text");
}

// "LINE: error text".
void holdRefusal(const std::string& text, int lines) {
  hold(fuzz::isShortLine(text), "a refusal is one line", text);
  std::istringstream stream(text);
  int line = 0;
  char colon = 0;
  stream >> line >> colon;
  hold(colon == ':' && line >= 1 && line <= lines, "a refusal names its line", text);
}

}  // namespace

void fuzz::property(std::string_view input) {
  const std::string text = expanded(input);
  Reader reader(text);
  int lines = 0;
  for (; !reader.atEnd(); ++lines) holdWords(std::string(reader.line()));
  std::istringstream stream(text);
  try {
    holdSteps(host::readScenario(stream), lines);
  } catch (const host::ScenarioTextError& error) {
    holdRefusal(error.what(), lines);
  }
}
