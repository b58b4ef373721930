#pragma once

#include <chrono>
#include <functional>

#include "verbs/Json.h"

namespace host {

class RemoteClient;

// Registers the client as an observer of the service. False: no reply came within the limit. Throws
// Error when the service refuses.
[[nodiscard]] bool observeEvents(RemoteClient& client, std::chrono::milliseconds limit);

// `clockctl watch` and `wait`, once registered: gives `print` the events that match the request
// (see readWatch), as {"event", "parameters"} and the members of eventTimeJson, until their number
// or the request's time is reached, or `print` returns false. Thread: its caller's. Throws Error
// when fewer came than the request wants; HostGone when the host ended.
void watchEvents(const Json& request, RemoteClient& client,
                 const std::function<bool(const Json& event)>& print);

}  // namespace host
