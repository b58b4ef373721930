#include "scenario/ScenarioPeer.h"

#include "Proxy.h"

namespace host {

ScenarioPeer::ScenarioPeer() = default;

ScenarioPeer::~ScenarioPeer() = default;

void ScenarioPeer::setProxySource(std::function<Proxy*()> source) {
  m_source = std::move(source);
}

void ScenarioPeer::dropProxy() {
  m_proxy.reset();
}

MessageCodec* ScenarioPeer::getCodec(const std::string& name) {
  return name == "json" ? &m_codec : nullptr;
}

Proxy* ScenarioPeer::createProxy(const std::string& interfaceName, const std::string& address) {
  if (interfaceName != "ClockServiceObserverIfc" || address != kAddress) return nullptr;
  if (!m_proxy) {
    m_proxy.reset(m_source());
    m_proxy->initProxy(*this);
  }
  return m_proxy.get();
}

bool ScenarioPeer::sendMethod(Method& method) {
  m_events.add(method);
  return true;
}

}  // namespace host
