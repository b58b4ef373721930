#include "services/PhysicalInterface.h"

#include <algorithm>

#include "physicalEventObserver.h"

namespace host {

PhysicalInterface::PhysicalInterface(int variant)
    : m_variant(static_cast<PhysDefs::hardwareSubVariant>(variant)) {}

PhysDefs::hardwareSubVariant PhysicalInterface::getHardwareSubVariant() {
  return m_variant;
}

void PhysicalInterface::subscribe(physicalEventObserver* observer,
                                  const std::vector<PhysDefs::SubscriptionGrp>& groups) {
  if (observer == nullptr) return;
  const bool hearsJacks = std::any_of(groups.begin(), groups.end(), [](const auto& group) {
    return group.other.kind == kJackKind;
  });
  if (hearsJacks) {
    const MutexLock lock(m_mutex);
    m_jackObservers.push_back(observer);
  }
  observer->getSubscribingService();
}

void PhysicalInterface::beginClockChange() {
  const MutexLock lock(m_mutex);
  ++m_clockChanges.begun;
}

void PhysicalInterface::endClockChange() {
  const MutexLock lock(m_mutex);
  ++m_clockChanges.ended;
}

void PhysicalInterface::jack(int plug, int status) {
  std::vector<physicalEventObserver*> observers;
  {
    const MutexLock lock(m_mutex);
    observers = m_jackObservers;
  }
  for (physicalEventObserver* const observer : observers) {
    observer->jackEvent(static_cast<PhysDefs::plugIdentifier>(plug),
                        static_cast<PhysDefs::plugStatus>(status));
  }
}

PhysicalInterface::ClockChanges PhysicalInterface::clockChanges() const {
  const MutexLock lock(m_mutex);
  return m_clockChanges;
}

void PhysicalInterface::dropSubscribers() {
  const MutexLock lock(m_mutex);
  m_jackObservers.clear();
}

}  // namespace host
