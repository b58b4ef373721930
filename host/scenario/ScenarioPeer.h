#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FrameworkContext.h"
#include "Method.h"
#include "ProxyRequest.h"
#include "base/Mutex.h"
#include "remote/JsonCodec.h"
#include "scenario/Received.h"

class Proxy;

namespace host {

// A remote observer in this process: the framework of an invoker for exactly one peer, whose proxy
// collects the events. Owner: a scenario. Thread: any for sendMethod(), events() and lastEvents();
// the framework thread for all else.
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

  // The last kLastEvents that came, as "UTC NAME NAME=VALUE ..."; oldest first.
  [[nodiscard]] std::vector<std::string> lastEvents() const;
  static constexpr std::size_t kLastEvents = 10;  // what fits on a screen beside the failure

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;
  bool sendMethod(Method& method) override;

 private:
  JsonCodec m_codec;
  std::function<Proxy*()> m_source;
  std::unique_ptr<Proxy> m_proxy;
  Received<Method> m_events;
  mutable Mutex m_mutex;
  std::deque<std::string> m_last CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
