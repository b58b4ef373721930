#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace host {

// Asks `resolve` for the address of `name`, on a thread of its own, and waits no longer than
// `limit`; it does not wait at all while the name server is silent (FailedLookups). Empty when it
// found none, was too slow, or was not asked: the name has failed a while ago (FailedLookups),
// kMostLookups are still out, or there is no memory or no thread; after the last two the name may
// be asked for again at once. One that returns late returns into nothing, but an address lets its
// name be asked for again; it keeps what it needs itself. Thread: any.
inline constexpr int kMostLookups = 8;

using Resolve = std::function<std::optional<std::string>()>;
[[nodiscard]] std::optional<std::string> boundedLookup(const std::string& name,
                                                       std::chrono::milliseconds limit,
                                                       Resolve resolve);

}  // namespace host
