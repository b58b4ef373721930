#include "apps/Session.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "apps/HostWait.h"

namespace host {
namespace {

bool usesCallSocket(Verb::Route route) {
  return route == Verb::Route::call || route == Verb::Route::watch;
}

std::string whyNotAllowed(const ClockCtlOptions& options, const NotAllowed& error, bool calls) {
  if (calls) return std::string(error.what()) + "; its owner can open it with --socket-group";
  const bool mayCall = ::faccessat(AT_FDCWD, options.socket.c_str(), W_OK, AT_EACCESS) == 0;
  return "the host's control socket " + options.controlSocket.string() + " is for its owner only" +
         (mayCall ? "; you may use call, watch and wait" : "");
}

}  // namespace

RemoteClient& Session::client(Verb::Route route) {
  const bool calls = usesCallSocket(route);
  const bool watches = route == Verb::Route::watch;
  std::optional<RemoteClient>& client = watches ? m_events : calls ? m_calls : m_control;
  if (client) return *client;
  const std::filesystem::path& socket = calls ? m_options.socket : m_options.controlSocket;
  try {
    if (m_options.waitHost) host::waitForHost(socket, !calls, *m_options.waitHost);
    using Events = RemoteClient::Events;
    return client.emplace(socket, watches ? Events::timed : Events::plain);
  } catch (const NotAllowed& error) {
    throw Error(whyNotAllowed(m_options, error, calls));
  }
}

void Session::waitForHost(std::chrono::milliseconds limit) const try {
  host::waitForHost(m_options.socket, false, limit);
} catch (const NotAllowed& error) {
  throw Error(whyNotAllowed(m_options, error, true));
}

void Session::disconnect() {
  m_calls.reset();
  m_events.reset();
  m_control.reset();
}

}  // namespace host
