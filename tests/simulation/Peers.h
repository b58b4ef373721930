#pragma once

#include <map>
#include <memory>
#include <string>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "MessageCodec.h"
#include "Method.h"
#include "plugin/Journal.h"

class Executable;

namespace simulation {

// Other processes. They call the service through its invoker; those whose name begins with "peer"
// get events. The codec encodes only a request's name, and keeps the rest in memory; real encoding
// is tested with the host. Destroyed after the service.
class Peers final : public FrameworkContext, public MessageCodec {
 public:
  explicit Peers(plugin::Journal& journal);
  virtual ~Peers();
  Peers(const Peers&) = delete;
  Peers& operator=(const Peers&) = delete;

  // The reply in one line, or "no reply". service: null if the call finds no service. The only
  // codec is "plain"; a request named "garbage" cannot be decoded.
  std::string call(Executable* service, const Method& request, const std::string& caller,
                   const std::string& codec = "plain");

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;
  void encode(Method& method, std::iostream& stream) override;
  bool decode(std::iostream& stream, Method& method) override;

 private:
  class Response;
  struct Peer;

  plugin::Journal& m_journal;
  std::unique_ptr<Invoker> m_invoker;
  std::map<std::string, std::unique_ptr<Peer>> m_peers;
  Method m_request;
  std::string m_reply;
  int m_openResponses = 0;
};

}  // namespace simulation
