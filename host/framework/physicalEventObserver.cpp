#include "physicalEventObserver.h"

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

void physicalEventObserver::getDestinationChannelName(std::string& name) {
  name.clear();
}
