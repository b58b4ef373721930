#pragma once

#include <map>
#include <string>

#include "MessageCodec.h"
#include "Method.h"
#include "support/Journal.h"
#include "support/RemotePeer.h"

namespace simulation {

// Simulates peers in other processes. They call the service through its invoker; those whose name
// begins with "peer" get events. The codec encodes only a request's name, and keeps the rest in
// memory; real encoding is tested with the host. Destroyed after the service.
class Peers final : public MessageCodec {
 public:
  explicit Peers(support::Journal& journal) : m_journal(journal) {}

  // The reply in one line, or "no reply". service: null if the call finds no service. The only
  // codec is "text"; a request named "garbage" cannot be decoded.
  std::string call(Executable* service, const Method& request, const std::string& caller,
                   const std::string& codec = "text");

  void encode(Method& method, std::iostream& stream) override;
  bool decode(std::iostream& stream, Method& method) override;

 private:
  support::RemotePeer& peerNamed(const std::string& name);

  support::Journal& m_journal;
  std::map<std::string, support::RemotePeer> m_peers;
  Method m_request;
};

}  // namespace simulation
