#include "remote/Registrations.h"

#include <sstream>

#include "MessageCodec.h"
#include "Method.h"
#include "remote/ClientLimits.h"
#include "remote/Peer.h"
#include "remote/ServiceCalls.h"

namespace host {
namespace {

std::string nameOfCall(Peer& peer) {
  std::stringstream stream{std::string(callInProgress())};
  Method method;
  return peer.codec().decode(stream, method) ? method.getName() : "";
}

}  // namespace

bool Registrations::mayUseProxy(Peer& peer) {
  const std::string name = nameOfCall(peer);
  if (name == "unobserveTimeEvents") remove(peer);
  if (name != "observeTimeEvents") return true;
  const std::string why = refusal(peer);
  if (why.empty()) {
    add(peer);
  } else {
    m_refusals.log(why.c_str());
  }
  return why.empty();
}

std::string Registrations::refusal(const Peer& peer) const {
  if (peer.registrations == kMostRegistrations) {
    return peer.address() + " observes " + std::to_string(kMostRegistrations) +
           " times, which is the limit";
  }
  if (peer.registrations == 0 && m_observers == m_mostObservers) {
    return std::to_string(m_mostObservers) + " clients observe, which is the limit";
  }
  if (peer.registrations > 0 && m_further == m_mostFurther) {
    return "all clients together have " + std::to_string(m_mostFurther) +
           " registrations beyond their first, which is the limit";
  }
  return "";
}

void Registrations::add(Peer& peer) {
  ++(peer.registrations == 0 ? m_observers : m_further);
  ++peer.registrations;
}

void Registrations::remove(Peer& peer) {
  if (peer.registrations == 0) return;
  --peer.registrations;
  --(peer.registrations == 0 ? m_observers : m_further);
}

void Registrations::forget(Peer& peer) {
  while (peer.registrations > 0) remove(peer);
}

}  // namespace host
