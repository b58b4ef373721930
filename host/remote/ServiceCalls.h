#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace host {

class Peer;
struct Frame;
struct RemoteTarget;

// Calls into the service. Thread: the loop's.

// Executes a client's call; its reply, if any, goes to the client's outbox. Throws what the invoker
// throws.
void executeCall(const RemoteTarget& target, const std::shared_ptr<Peer>& client,
                 const Frame& call);

// The payload of the call that this thread is executing, encoded by the client's codec; empty if
// there is none. The service requests the client's proxy within such a call.
[[nodiscard]] std::string_view callInProgress();

enum class Unobserved {
  one,
  nothingLeft,  // no thread of the service uses the peer's proxy, or will again
  noAnswer      // the service did not answer: it may still use the proxy
};

// Undoes one "observeTimeEvents" of a disconnected peer by calling "unobserveTimeEvents" on its
// behalf. The service takes its observer lock for that. Throws nothing.
[[nodiscard]] Unobserved unobservePeer(const RemoteTarget& target, const std::string& address);

}  // namespace host
