#include "simulation/Peers.h"

#include <iostream>
#include <iterator>
#include <utility>

#include "support/MethodText.h"

namespace simulation {

support::RemotePeer& Peers::peerNamed(const std::string& name) {
  const auto [place, isNew] = m_peers.try_emplace(name, name, this);
  support::RemotePeer& peer = place->second;
  if (isNew) {
    peer.framework.keepsCalls = true;
    if (name.rfind("peer", 0) != 0) peer.framework.proxy = nullptr;
    peer.onEvent = [this, name](const Method& event) {
      m_journal.add(name + " " + support::lineOf(event));
    };
  }
  return peer;
}

std::string Peers::call(Executable* service, const Method& request, const std::string& caller,
                        const std::string& codec) {
  m_request = request;
  support::RemotePeer& peer = peerNamed(caller);
  const support::Outcome outcome = peer.call(service, request.getName(), codec);
  for (const std::string& asked : std::exchange(peer.framework.proxiesAsked, {}))
    m_journal.add("proxy " + asked);
  peer.framework.codecsAsked.clear();
  if (!outcome.deleted) m_journal.add("a response was not deleted");
  return outcome.replies.empty() ? "no reply" : outcome.replies.back();
}

void Peers::encode(Method& method, std::iostream& stream) {
  stream << support::lineOf(method);
}

bool Peers::decode(std::iostream& stream, Method& method) {
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  method = m_request;
  return bytes == m_request.getName() && bytes != "garbage";
}

}  // namespace simulation
