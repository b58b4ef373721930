#include "scenario/ScenarioFile.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

#include "base/PrintableText.h"
#include "scenario/ScenarioParser.h"

namespace host {
namespace fs = std::filesystem;
namespace {

// Larger than any scenario. A file without an end, such as /dev/zero, would fill the memory.
constexpr std::size_t kMostMebibytes = 16;
constexpr std::size_t kMostText = kMostMebibytes * 1024 * 1024;

// The whole text; if it is too long, a beginning of more than kMostText bytes.
std::string beginningOf(std::istream& stream) {
  std::string text;
  std::array<char, 65536> part;
  while (text.size() <= kMostText && stream) {
    stream.read(part.data(), part.size());
    text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
  }
  return text;
}

[[noreturn]] void refuse(const fs::path& file, const std::string& why) {
  throw ScenarioTextError(escapedLine(file.string()) + ": " + why);
}

std::string textOf(const fs::path& file) {
  std::ifstream stream(file);
  std::string text = beginningOf(stream);
  if (!stream.is_open() || stream.bad() || fs::is_directory(file)) {
    refuse(file, "cannot be read; a scenario is a text file");
  }
  if (text.size() <= kMostText) return text;
  refuse(file, "is too large; a scenario has at most " + std::to_string(kMostMebibytes) + " MiB");
}

std::vector<fs::path> filesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".scenario") files.push_back(entry.path());
  }
  if (error) refuse(folder, "cannot be read; name a file, or a folder of scenarios");
  if (files.empty())
    refuse(folder, "has no file *.scenario; name a file, or a folder of scenarios");
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

Scenario readScenarioFile(const fs::path& file) {
  std::istringstream text(textOf(file));
  try {
    return readScenario(text, file, textOf);
  } catch (const ScenarioTextError& error) {
    throw ScenarioTextError(escapedLine(file.string()) + ':' + escapedLine(error.what()));
  }
}

std::vector<fs::path> scenarioFiles(std::span<const fs::path> filesAndFolders) {
  std::vector<fs::path> files;
  for (const fs::path& each : filesAndFolders) {
    std::error_code error;
    if (!fs::is_directory(each, error)) {
      files.push_back(each);
      continue;
    }
    const std::vector<fs::path> inside = filesIn(each);
    files.insert(files.end(), inside.begin(), inside.end());
  }
  return files;
}

}  // namespace host
