#pragma once

#include <string>

namespace host {

// The folder in which Storage puts its files. Thread: any.
// Empty, as at the start: there is none, and Storage refuses to be bound.
void setStorageFolder(const std::string& folder);
[[nodiscard]] std::string storageFolder();

}  // namespace host
