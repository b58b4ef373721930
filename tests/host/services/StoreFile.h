#pragma once

#include <filesystem>
#include <string>

#include "support/FileContent.h"

namespace host {

// Access to a store's file from outside the host. Written files have mode 0600. Thread: the test's.

void writeBytes(const std::filesystem::path& file, const std::string& bytes);

// Runs SQL on the file as another program would. Returns SQLite's error message, empty on success.
[[nodiscard]] std::string runSql(const std::filesystem::path& file, const std::string& sql);

// The same bytes each time.
[[nodiscard]] std::string randomBytes(std::size_t length);

}  // namespace host
