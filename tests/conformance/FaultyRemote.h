#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "MessageCodec.h"
#include "ProxyRequest.h"
#include "RemoteEnd.h"

namespace conformance {

// A framework context that passes its calls on, with the faults that are switched on. The real one
// outlives it.
class FaultyRemote final : public FrameworkContext {
 public:
  explicit FaultyRemote(FrameworkContext& real);
  ~FaultyRemote();
  FaultyRemote(const FaultyRemote&) = delete;
  FaultyRemote& operator=(const FaultyRemote&) = delete;
  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

 private:
  class FaultyCodec;
  class FaultyRequest;

  FrameworkContext& m_real;
  std::list<FaultyCodec> m_codecs;
  std::list<FaultyRequest> m_requests;
  std::list<PlainProxy> m_extraProxies;
};

// Stands between the framework and an invoker, with the faults of the framework's calls.
class FaultyCalls final : public Invoker {
 public:
  FaultyCalls(Invoker& real, const bool& disconnecting)
      : m_real(real), m_disconnecting(disconnecting) {}
  void handleMessage(Executable* service, const char* message, int length,
                     InvokerResponse* response) override;

 private:
  Invoker& m_real;
  const bool& m_disconnecting;
};

}  // namespace conformance
