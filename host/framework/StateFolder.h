#pragma once

#include <string>

namespace host {

// The folder of Storage's files. Empty, the default: Storage::init fails. Thread: any.
void setStorageFolder(const std::string& folder);
[[nodiscard]] std::string storageFolder();

}  // namespace host
