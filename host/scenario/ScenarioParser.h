#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <istream>
#include <string>

#include "scenario/Scenario.h"

namespace host {

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
