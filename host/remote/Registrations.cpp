#include "remote/Registrations.h"

#include <sstream>

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

bool Registrations::mayRegister(Peer& peer) {
  const std::string name = nameOfCall(peer);
  if (name == "unobserveTimeEvents") takeOff(peer);
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
           " times, which is the most";
  }
  if (peer.registrations == 0 && m_observers == m_mostObservers) {
    return std::to_string(m_mostObservers) + " clients observe, which is the most";
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

void Registrations::takeOff(Peer& peer) {
  if (peer.registrations == 0) return;
  --peer.registrations;
  --(peer.registrations == 0 ? m_observers : m_further);
}

void Registrations::forget(Peer& peer) {
  while (peer.registrations > 0) takeOff(peer);
}

}  // namespace host
