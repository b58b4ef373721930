#pragma once

#include <string>

namespace host {

struct RemoteTarget;

enum class TakenBack {
  one,
  nothingLeft,  // no thread of the service is in the peer's proxy, or gets there again
  noAnswer      // the service did not answer: it may still use the proxy
};

// Undoes one "observeTimeEvents" of the peer at `address`, by asking "unobserveTimeEvents" in its
// name. The service takes its observer lock for that. Throws nothing. Thread: the loop's.
[[nodiscard]] TakenBack takeOneBack(const RemoteTarget& target, const std::string& address);

}  // namespace host
