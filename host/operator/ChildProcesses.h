#pragma once

#include <sys/types.h>
#include <optional>
#include <string>

namespace host {

// The id of a running child of this process that was started as `program` (a name without a
// folder). Empty when there is none, or /proc cannot be read. Thread: any.
[[nodiscard]] std::optional<pid_t> childRunning(const std::string& program);

// The words that a process was started with, separated by blanks. Empty when it has ended.
[[nodiscard]] std::string commandLineOf(pid_t process);

}  // namespace host
