#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <optional>

namespace host {

// The process at the other end of a connected Unix socket, as it was when it connected. Empty if
// the kernel does not report it.
[[nodiscard]] std::optional<ucred> processAt(int socket);

// That process, if it is stopped, by SIGSTOP or by a debugger.
[[nodiscard]] std::optional<pid_t> stoppedProcessAt(int socket);

// The user of that process, or kUnknownUser.
inline constexpr uid_t kUnknownUser = static_cast<uid_t>(-1);
[[nodiscard]] uid_t userAt(int socket);

}  // namespace host
