#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "ProxyRequest.h"
#include "support/Framework.h"

namespace support {

// A peer in another process: calls a service through an invoker of its own, and can observe it.
// Owner: the test. Outlives its registrations. Thread: any, in parallel.
class RemotePeer final : public ProxyRequest {
 public:
  // codec: of its messages, in place of TextCodec.
  explicit RemotePeer(std::string address = "peer 5", MessageCodec* codec = nullptr)
      : m_address(std::move(address)) {
    framework.keepsCalls = false;
    framework.proxy = m_proxy.get();
    if (codec != nullptr) framework.codecs["text"] = codec;
    m_invoker->initInvoker(&framework);
    m_proxy->initProxy(*this);
  }

  // service: null if the call finds no service.
  Outcome call(Executable* service, const std::string& message, const std::string& codec = "text") {
    return request(*m_invoker, service, message, codec, m_address);
  }

  bool sendMethod(Method& event) override {
    if (onEvent) onEvent(event);
    return true;
  }

  std::function<void(const Method&)> onEvent;
  Framework framework;

 private:
  const std::string m_address;
  const std::unique_ptr<Invoker> m_invoker{createClockServiceInvoker()};
  const std::unique_ptr<Proxy> m_proxy{createClockServiceObserverProxy()};
};

}  // namespace support
