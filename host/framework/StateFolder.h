#pragma once

#include <string>

namespace host {

// The folder of Storage's files. Thread: any.
// Empty, the default: there is none, and Storage::init fails.
void setStorageFolder(const std::string& folder);
[[nodiscard]] std::string storageFolder();

}  // namespace host
