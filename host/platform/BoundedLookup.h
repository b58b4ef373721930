#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace host {

// How many lookups are out at most; those that are no longer waited for count.
inline constexpr int kMostLookups = 8;

// How long a name is waited for while the name server counts as silent (FailedLookups). A server
// that is well answers in less: perhaps only the zone of the other name is dead. Short enough that
// kMostLookups waits in a row hold up the framework thread for less than a second.
inline constexpr std::chrono::milliseconds kShortWait{100};

// The numeric address of the name; empty: a name server says that it has none. Throws what is a
// std::exception when no server has answered.
using Resolve = std::function<std::optional<std::string>()>;

// Asks `resolve` for the address of `name`, on a thread of its own, and waits `limit` at most,
// or kShortWait if that is less and the name server is silent. Empty when it found none, was too
// slow, or was not asked:
// - The name has failed a while ago (FailedLookups), or another thread is waiting for it: a name
//   counts as failed until its address is there, so the second thread gets nothing at once.
// - kMostLookups are out, or there is no memory or no thread: one log line, and the name may be
//   asked for again at once.
// A lookup that is too slow keeps its own copy of `resolve`. Any answer that comes late ends the
// silence that its name began, and an address lets its name be asked for again. Thread: any.
[[nodiscard]] std::optional<std::string> boundedLookup(const std::string& name,
                                                       std::chrono::milliseconds limit,
                                                       Resolve resolve);

}  // namespace host
