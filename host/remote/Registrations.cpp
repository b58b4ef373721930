#include "remote/Registrations.h"

#include <sstream>
#include <string>

#include "Logging.h"
#include "MessageCodec.h"
#include "Method.h"
#include "remote/ClientBounds.h"
#include "remote/Peer.h"

namespace host {
namespace {

thread_local std::string_view t_call;

std::string nameOfCall(Peer& peer) {
  std::stringstream stream{std::string(t_call)};
  Method method;
  return peer.codec().decode(stream, method) ? method.getName() : "";
}

}  // namespace

CallUnderWay::CallUnderWay(std::string_view call) {
  t_call = call;
}

CallUnderWay::~CallUnderWay() {
  t_call = {};
}

bool mayRegister(Peer& peer) {
  const std::string name = nameOfCall(peer);
  if (name == "unobserveTimeEvents" && peer.registrations > 0) --peer.registrations;
  if (name != "observeTimeEvents") return true;
  if (peer.registrations == kMostRegistrations) return false;
  if (++peer.registrations < kMostRegistrations) return true;
  logAppUni("clockhost", 3, __FILE__, __LINE__,
            "%s observes %zu times, which is the most; more is refused", peer.address().c_str(),
            kMostRegistrations);
  return true;
}

}  // namespace host
