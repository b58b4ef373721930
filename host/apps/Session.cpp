#include "apps/Session.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace host {
namespace {

bool usesCallSocket(Verb::Route route) {
  return route == Verb::Route::call || route == Verb::Route::watch;
}

std::string whyNotAllowed(const ClockCtlOptions& options, const NotAllowed& error, bool calls) {
  if (calls) return std::string(error.what()) + "; its owner can open it with --socket-group";
  const bool mayCall = ::faccessat(AT_FDCWD, options.socket.c_str(), W_OK, AT_EACCESS) == 0;
  return "the host's control socket " + options.controlSocket.string() + " is for its owner only" +
         (mayCall ? "; you may use call and watch" : "");
}

}  // namespace

RemoteClient& Session::client(Verb::Route route) {
  const bool calls = usesCallSocket(route);
  std::optional<RemoteClient>& client = calls ? m_calls : m_control;
  if (client) return *client;
  try {
    return client.emplace(calls ? m_options.socket : m_options.controlSocket);
  } catch (const NotAllowed& error) {
    throw Error(whyNotAllowed(m_options, error, calls));
  }
}

void Session::disconnect() {
  m_calls.reset();
  m_control.reset();
}

}  // namespace host
