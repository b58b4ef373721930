#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace host {

// How many lookups may be pending, including those whose callers no longer wait.
inline constexpr int kMostLookups = 8;

// How long to wait for a name while the name server counts as silent (FailedLookups). A working
// server answers sooner: perhaps only the other name's zone is dead. Short enough that kMostLookups
// waits in a row block the framework thread for less than a second.
inline constexpr std::chrono::milliseconds kShortWait{100};

// The numeric address of the name; empty: a name server answered that it has none. Throws a
// std::exception when no server has answered.
using Resolve = std::function<std::optional<std::string>()>;

// Calls `resolve` for the address of `name` on a new thread and waits at most `limit`, or
// kShortWait if that is less and the name server counts as silent. Empty when there is no address,
// no answer in time, or no lookup because:
// - the name failed recently (FailedLookups), or another thread is looking it up: a name counts as
//   failed until its address is known;
// - kMostLookups are pending, or there is no memory or no thread: one log line, and the name may be
//   looked up again at once.
// A slow lookup keeps its own copy of `resolve`. A late answer ends the silence that its name
// caused, and a late address permits lookups of its name again. Thread: any.
[[nodiscard]] std::optional<std::string> boundedLookup(const std::string& name,
                                                       std::chrono::milliseconds limit,
                                                       Resolve resolve);

}  // namespace host
