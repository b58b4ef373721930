#pragma once

#include <filesystem>
#include <string>

#include "support/FileContent.h"

namespace host {

// A store's file seen from outside the host, its owner's alone. Thread: the test's.

void writeBytes(const std::filesystem::path& file, const std::string& bytes);

// Runs SQL on the file as another program would. Returns SQLite's words, empty when it worked.
[[nodiscard]] std::string runSql(const std::filesystem::path& file, const std::string& sql);

// The same bytes each time.
[[nodiscard]] std::string randomBytes(std::size_t length);

}  // namespace host
