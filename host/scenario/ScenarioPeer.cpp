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

std::vector<Method> ScenarioPeer::events() const {
  const MutexLock lock(m_mutex);
  return m_events;
}

void ScenarioPeer::pass(std::size_t count) {
  const MutexLock lock(m_mutex);
  m_events.erase(m_events.begin(), m_events.begin() + static_cast<std::ptrdiff_t>(count));
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
  const MutexLock lock(m_mutex);
  m_events.push_back(method);
  return true;
}

}  // namespace host
