#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <optional>

namespace host {

// The process at the other end of a connected Unix socket, as the kernel knew it when it connected.
// Empty: the system does not know.
[[nodiscard]] std::optional<ucred> processAt(int socket);

// Its user; kUnknownUser when the system does not know.
inline constexpr uid_t kUnknownUser = static_cast<uid_t>(-1);
[[nodiscard]] uid_t userAt(int socket);

}  // namespace host
