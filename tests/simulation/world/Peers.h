#pragma once

#include <map>
#include <memory>
#include <string>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "ProxyRequest.h"
#include "simulation/Journal.h"
#include "simulation/world/PlainCodec.h"

class Executable;

namespace simulation {

// Other processes: they call the service through its invoker, and "peer..." can be reached by
// events. Destroyed after the service.
class Peers : public FrameworkContext {
 public:
  explicit Peers(Journal& journal);
  virtual ~Peers();
  Peers(const Peers&) = delete;
  Peers& operator=(const Peers&) = delete;

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

  // service: null is a call that finds none.
  void call(Executable* service, const std::string& bytes, const std::string& caller,
            const std::string& codec);

 private:
  class Response;
  class Request;
  struct Peer;

  Journal& m_journal;
  PlainCodec m_codec;
  std::unique_ptr<Invoker> m_invoker;
  std::map<std::string, std::unique_ptr<Peer>> m_peers;
  int m_openResponses = 0;
};

}  // namespace simulation
