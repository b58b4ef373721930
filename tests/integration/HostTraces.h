#pragma once

#include <sys/types.h>

#include <filesystem>

namespace integration {

// For tests of programs that start hosts: where a host runs, and whether one was left behind.

// Waits until a process has started a clockhost. The parent of that host's state folder; empty when
// there is none within 30 seconds.
[[nodiscard]] std::filesystem::path hostFolderOf(pid_t parent);

// Whether a process of this machine has the folder in its command line.
[[nodiscard]] bool isInUse(const std::filesystem::path& folder);

}  // namespace integration
