#pragma once

#include <filesystem>
#include <span>
#include <vector>

#include "scenario/Scenario.h"

namespace host {

// Reads a scenario file. Throws ScenarioTextError: "FILE:LINE: what was wrong; what would be
// right", or without the line when the file cannot be read.
[[nodiscard]] Scenario readScenarioFile(const std::filesystem::path& file);

// The files to run: a file stands for itself, a folder for the files NAME.scenario in it, by name.
// Throws ScenarioTextError for a folder without any.
[[nodiscard]] std::vector<std::filesystem::path> scenarioFiles(
    std::span<const std::filesystem::path> filesAndFolders);

}  // namespace host
