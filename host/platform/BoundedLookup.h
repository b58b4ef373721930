#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace host {

// Asks `resolve` for an address, on a thread of its own, and waits no longer than `limit`. Empty
// when it found none, was too slow, or could not be asked: kMostLookups are still out. One that
// returns late returns into nothing; it keeps what it needs itself.
inline constexpr int kMostLookups = 8;

using Resolve = std::function<std::optional<std::string>()>;
[[nodiscard]] std::optional<std::string> boundedLookup(std::chrono::milliseconds limit,
                                                       Resolve resolve);

}  // namespace host
