#pragma once

#include <string>

#include "PhysDefs.h"

// Receives events of keys, plugs, lamps and the like from the physical interface.
// Thread: the framework's. Objects are never deleted through this base. Defaults ignore the event.
class physicalEventObserver {
 public:
  virtual void buttonPressedEvent(PhysDefs::keyFunctionType function, int key,
                                  PhysDefs::actionType action, std::string label);
  virtual void hookswitchEvent(PhysDefs::actionType action) = 0;
  virtual void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) = 0;
  virtual void hotplugEvent(PhysDefs::hotplugAction action, PhysDefs::hotplugBus bus,
                            PhysDefs::hotplugClass deviceClass, std::string device,
                            std::string details);
  virtual void lampEvent(int lamp, PhysDefs::lampMode mode, PhysDefs::lampColour colour);
  virtual void sliderEvent(int position);
  virtual void clickwheelEvent(int steps);
  virtual void physicalInactivityTimerExpired(int seconds);
  virtual void fpkAvailableEvent();
  virtual void shiftChangeEvent(bool shifted);
  virtual void activityDetected();

  // The channel through which events are sent. The default leaves `name` empty: direct calls.
  virtual void getDestinationChannelName(std::string& name);

  // Called at subscription. May do nothing.
  virtual void getSubscribingService() = 0;

 protected:
  ~physicalEventObserver() = default;
};
