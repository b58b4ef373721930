#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "ProxyRequest.h"
#include "support/Framework.h"

namespace plugin {

// A peer in another process, which calls the service through its invoker and can observe it.
// Owner: the test. Outlives its registrations; destroyed before the service. Thread: any, in
// parallel.
class RemotePeer final : public ProxyRequest {
 public:
  explicit RemotePeer(Executable& service) : m_service(service) {
    m_framework.keepsCalls = false;
    m_framework.proxy = m_proxy.get();
    m_invoker->initInvoker(&m_framework);
    m_proxy->initProxy(*this);
  }

  // The reply to a message, both as in support/MethodText.h; empty without one.
  std::string call(const std::string& message) {
    const auto replies = support::request(*m_invoker, &m_service, message).replies;
    return replies.empty() ? "" : replies.front();
  }

  bool sendMethod(Method& /*event*/) override {
    ++events;
    return true;
  }

  std::atomic<int> events{0};  // received so far

 private:
  Executable& m_service;
  support::Framework m_framework;
  const std::unique_ptr<Invoker> m_invoker{createClockServiceInvoker()};
  const std::unique_ptr<Proxy> m_proxy{createClockServiceObserverProxy()};
};

}  // namespace plugin
