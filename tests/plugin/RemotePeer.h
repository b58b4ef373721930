#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "MessageCodec.h"
#include "Proxy.h"
#include "ProxyRequest.h"

class Executable;

namespace plugin {

// Another process that calls the service through its invoker, and that the service can observe.
// Owner: the test; outlives its observations, and goes before the service. Thread: any, in
// parallel.
class RemotePeer final : public FrameworkContext, public ProxyRequest {
 public:
  explicit RemotePeer(Executable& service);
  ~RemotePeer();
  RemotePeer(const RemotePeer&) = delete;
  RemotePeer& operator=(const RemotePeer&) = delete;

  // The reply to a message, both as in unit/MethodText.h; empty without one.
  std::string call(const std::string& message);

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;
  bool sendMethod(Method& event) override;

  std::atomic<int> events{0};  // heard so far

 private:
  class Response;
  class TextCodec final : public MessageCodec {
   public:
    void encode(Method& method, std::iostream& stream) override;
    bool decode(std::iostream& stream, Method& method) override;
  };

  Executable& m_service;
  TextCodec m_codec;
  const std::unique_ptr<Invoker> m_invoker;
  const std::unique_ptr<Proxy> m_proxy;
};

}  // namespace plugin
