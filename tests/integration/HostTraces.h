#pragma once

#include <sys/types.h>

#include <filesystem>

namespace integration {

// Of the hosts that another program starts: for tests that look what it leaves behind.

// Waits until the program has a clockhost, and returns the folder that its host lives in; empty
// when it has none within 30 seconds.
[[nodiscard]] std::filesystem::path folderOfTheHostOf(pid_t program);

// Whether a process of this machine has the folder in its command line.
[[nodiscard]] bool livesSomebodyIn(const std::filesystem::path& folder);

}  // namespace integration
