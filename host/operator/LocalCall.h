#pragma once

#include <optional>
#include <string>

#include "Method.h"

namespace host {

class Device;

// Calls the service through its invoker, as a peer in this process. The invoker's framework must
// know the codec "json". address: names the peer; observers are registered for it. Empty when there
// is no reply. Thread: the framework's. REQUIRES: the device runs.
[[nodiscard]] std::optional<Method> callService(Device& device, Method& call,
                                                const std::string& address = {});

// The same for what the host itself wants to know. What the service logs about it in detail is
// dropped.
[[nodiscard]] std::optional<Method> askService(Device& device, Method& call);

}  // namespace host
