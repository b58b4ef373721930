#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FrameworkContext.h"
#include "Method.h"
#include "ProxyRequest.h"
#include "base/Mutex.h"
#include "remote/JsonCodec.h"

class Proxy;

namespace host {

// A remote observer that lives in this process: the framework behind an invoker for exactly one
// peer, whose proxy writes down what it is told.
// Owner: a scenario. Thread: events come on any; the rest is the framework thread's.
class ScenarioPeer : public FrameworkContext, public ProxyRequest {
 public:
  static constexpr const char* kAddress = "scenario";

  ScenarioPeer();
  virtual ~ScenarioPeer();

  // From where a device's proxies come; before its start.
  void setProxySource(std::function<Proxy*()> source);

  // REQUIRES: the service observes with it no longer.
  void dropProxy();

  // Not passed over yet, oldest first.
  [[nodiscard]] std::vector<Method> events() const;
  void pass(std::size_t count);

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;
  bool sendMethod(Method& method) override;

 private:
  JsonCodec m_codec;
  std::function<Proxy*()> m_source;
  std::unique_ptr<Proxy> m_proxy;
  mutable Mutex m_mutex;
  std::vector<Method> m_events CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
