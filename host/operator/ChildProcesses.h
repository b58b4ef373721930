#pragma once

#include <sys/types.h>
#include <optional>
#include <string>

namespace host {

// A running child of this process that was started as `program` (a name without a folder). Nothing
// when there is none, or the system does not tell. Thread: any.
[[nodiscard]] std::optional<pid_t> childRunning(const std::string& program);

}  // namespace host
