#pragma once

#include <functional>
#include <memory>
#include <string>

#include "FrameworkContext.h"
#include "Method.h"
#include "ProxyRequest.h"
#include "remote/JsonCodec.h"
#include "scenario/Received.h"

class Proxy;

namespace host {

// A remote observer in this process: the framework of an invoker for exactly one peer, whose proxy
// collects the events. Owner: a scenario. Thread: events come on any; the rest is the framework
// thread's.
class ScenarioPeer : public FrameworkContext, public ProxyRequest {
 public:
  static constexpr const char* kAddress = "scenario";

  ScenarioPeer();
  virtual ~ScenarioPeer();

  // Makes a device's observer proxies. Set before the device starts.
  void setProxySource(std::function<Proxy*()> source);

  // REQUIRES: the service no longer uses the proxy.
  void dropProxy();

  [[nodiscard]] Received<Method>& events() { return m_events; }

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;
  bool sendMethod(Method& method) override;

 private:
  JsonCodec m_codec;
  std::function<Proxy*()> m_source;
  std::unique_ptr<Proxy> m_proxy;
  Received<Method> m_events;
};

}  // namespace host
