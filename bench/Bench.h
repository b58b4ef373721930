#pragma once

#include <filesystem>
#include <ostream>
#include <span>
#include <string>

#include "Figure.h"

namespace bench {

// The command: measures the figures that the arguments name, prints the table and writes it as
// JSON, to `json` unless the arguments name another file. Both `figures` and `table` outlive it.
// progress: shows there how many are measured; null: nowhere.
// Returns the exit status: 0 all bounds are met, 1 one is not or could not be measured.
// Throws host::UsageError, and std::runtime_error when the JSON cannot be written; before
// measuring, if it cannot be created.
[[nodiscard]] int run(std::span<const std::string> words, std::span<const Figure> figures,
                      const std::filesystem::path& json, std::ostream& table,
                      std::ostream* progress = nullptr);

}  // namespace bench
