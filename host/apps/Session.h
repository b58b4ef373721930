#pragma once

#include <chrono>
#include <optional>

#include "apps/ClockCtlOptions.h"
#include "remote/RemoteClient.h"
#include "verbs/Verb.h"

namespace host {

// The connections of clockctl to the host's two sockets, for calls, events and control requests.
// Each is made when a command first needs it, and serves all later commands. Owner: its creator;
// the options outlive it. Thread: one. Failure: NoHost, or host::Error that says what this user can
// do when permission is missing.
class Session {
 public:
  explicit Session(const ClockCtlOptions& options) : m_options(options) {}

  // Waits first for a host that is starting if the options say so.
  [[nodiscard]] RemoteClient& client(Verb::Route route);

  // Waits until a host answers at the call socket.
  void waitForHost(std::chrono::milliseconds limit) const;

  // Ends the connections, and with them what the host does for them: the registration as an
  // observer, a stream of answers, a move of the clock. A later command connects again.
  void disconnect();

 private:
  const ClockCtlOptions& m_options;
  std::optional<RemoteClient> m_calls;
  std::optional<RemoteClient> m_events;
  std::optional<RemoteClient> m_control;
};

}  // namespace host
