#pragma once

#include <string>

#include "remote/RemoteServer.h"

namespace host {

// Undoes every "observeTimeEvents" of the peer at `address`, by asking "unobserveTimeEvents" in its
// name until the service says that there is nothing left. The service takes its observer lock for
// that: when this returns true, no thread of the service is in the peer's proxy, or gets there
// again. False when the service did not answer: the proxy may then still be in use. Thread: the
// loop's.
[[nodiscard]] bool takeBack(const RemoteTarget& target, const std::string& address);

}  // namespace host
