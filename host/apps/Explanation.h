#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "verbs/Json.h"

namespace host {

class RemoteClient;
class Session;

// What a user would ask next, asked at the control socket. Thread: the caller's. Failure: without
// an answer there is no explanation; HostGone.

// That the host is stopped, and what resumes it. Empty: it is not.
[[nodiscard]] std::string whyStopped(const RemoteClient& client);

// The value that the key of a `set` has, if it is not the one that was meant: a value may be stored
// in another form, and a time may be an hour off.
[[nodiscard]] std::optional<std::string> otherValue(RemoteClient& control, const Json& request,
                                                    const Json& answer,
                                                    std::chrono::milliseconds limit);

// What the service said last within a call that this process made: the text of its last line in
// the log. Empty: nothing, or this user may not ask.
[[nodiscard]] std::string lastLineOf(Session& session, std::uint32_t call,
                                     std::chrono::milliseconds limit);

// Whether a one-way call of this last line was refused.
[[nodiscard]] bool saysRefused(const std::string& line);

}  // namespace host
