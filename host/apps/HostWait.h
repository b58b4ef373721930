#pragma once

#include <chrono>
#include <filesystem>

namespace host {

// Waits until a host answers at its call socket, or at its control socket. The socket and its
// folder need not exist yet. Thread: its caller's. Throws NoHost at the limit; at once NotAllowed,
// and Error for a path that no socket can have or a host that refuses the client.
void waitForHost(const std::filesystem::path& socket, bool control,
                 std::chrono::milliseconds limit);

}  // namespace host
