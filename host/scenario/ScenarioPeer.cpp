#include "scenario/ScenarioPeer.h"

#include "Proxy.h"
#include "clock/VirtualClock.h"
#include "scenario/EventExpectation.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

std::string nowText() {
  const VirtualClock* const clock = processClock();
  if (clock == nullptr) return "";
  return instantText(std::chrono::duration_cast<std::chrono::seconds>(clock->wall())) + ' ';
}

}  // namespace

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
  std::string text = nowText() + eventText(method);
  const MutexLock lock(m_mutex);
  m_last.push_back(std::move(text));
  if (m_last.size() > kLastEvents) m_last.pop_front();
  return true;
}

std::vector<std::string> ScenarioPeer::lastEvents() const {
  const MutexLock lock(m_mutex);
  return {m_last.begin(), m_last.end()};
}

}  // namespace host
