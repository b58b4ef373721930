// The bases of what the plug-in's factories return, and management records.
#include "Executable.h"
#include "Invoker.h"
#include "ManageableData.h"
#include "Proxy.h"
#include "Service.h"
#include "physicalEventObserver.h"

Executable::~Executable() = default;
void Executable::timerEvent(int /*timerId*/) {}

Service::~Service() = default;
void Service::handleMsg(const char* /*data*/, int /*length*/, std::string /*sender*/,
                        CommsChannelIfc& /*channel*/,
                        CommsChannelDataContainerMessage* /*container*/) {}

int Threadable::getThreadPriorityForPlatform() {
  return 0;
}
std::string Threadable::type() {
  return "Threadable";
}

Proxy::~Proxy() = default;
void Proxy::init(Context& /*context*/) {}
void Proxy::shutdown() {}

Invoker::~Invoker() = default;
void Invoker::initInvoker(FrameworkContext* /*context*/) {}

void physicalEventObserver::buttonPressedEvent(PhysDefs::keyFunctionType /*function*/, int /*key*/,
                                               PhysDefs::actionType /*action*/,
                                               std::string /*label*/) {}
void physicalEventObserver::hotplugEvent(PhysDefs::hotplugAction /*action*/,
                                         PhysDefs::hotplugBus /*bus*/,
                                         PhysDefs::hotplugClass /*deviceClass*/,
                                         std::string /*device*/, std::string /*details*/) {}
void physicalEventObserver::lampEvent(int /*lamp*/, PhysDefs::lampMode /*mode*/,
                                      PhysDefs::lampColour /*colour*/) {}
void physicalEventObserver::sliderEvent(int /*position*/) {}
void physicalEventObserver::clickwheelEvent(int /*steps*/) {}
void physicalEventObserver::physicalInactivityTimerExpired(int /*seconds*/) {}
void physicalEventObserver::fpkAvailableEvent() {}
void physicalEventObserver::shiftChangeEvent(bool /*shifted*/) {}
void physicalEventObserver::activityDetected() {}
void physicalEventObserver::getDestinationChannelName(std::string& /*name*/) {}

ManageableData::ManageableData() = default;
ManageableData::~ManageableData() = default;
ManageableData::ManageableData(const ManageableData&) = default;
ManageableData& ManageableData::operator=(const ManageableData&) = default;

std::string ManageableData::getRootId() const {
  return m_roots.empty() ? std::string() : m_roots.front();
}

void ManageableData::setRootId(const std::string& key, LocalMgmtIfc* /*agent*/) {
  m_roots = {key};
}

void ManageableData::addRootId(const std::string& key, LocalMgmtIfc* /*agent*/) {
  m_roots.push_back(key);
}

void ManageableData::populate(const std::string& key, const std::string& value) {
  m_values[key] = value;
}

void ManageableData::populate(const std::string& identifier, const std::string& name,
                              const std::string& value) {
  if (m_roots.empty()) m_roots = {identifier};
  m_names[identifier] = name;
  m_values[identifier] = value;
}

bool ManageableData::interogate(const std::string& key, std::string& value) const {
  const auto found = m_values.find(key);
  if (found == m_values.end()) return false;
  value = found->second;
  return true;
}
