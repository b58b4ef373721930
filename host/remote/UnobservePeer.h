#pragma once

#include <string>

namespace host {

struct RemoteTarget;

enum class Unobserved {
  one,
  nothingLeft,  // no thread of the service uses the peer's proxy, or will again
  noAnswer      // the service did not answer: it may still use the proxy
};

// Undoes one "observeTimeEvents" of the peer at `address` by calling "unobserveTimeEvents" on its
// behalf. The service takes its observer lock for that. Throws nothing. Thread: the loop's.
[[nodiscard]] Unobserved unobservePeer(const RemoteTarget& target, const std::string& address);

}  // namespace host
