#pragma once

#include <vector>

#include "PhysDefs.h"

class physicalEventObserver;

// The telephone's hardware, registered as "PhysicalInterfaceServiceIfc".
// Owner: the framework. Thread: any.
class PhysicalInterfaceServiceIfc {
 public:
  // Fixed for the life of the device.
  virtual PhysDefs::hardwareSubVariant getHardwareSubVariant() = 0;

  // The observer, which is not owned, receives the events of these groups until the service is
  // unloaded.
  virtual void subscribe(physicalEventObserver* observer,
                         const std::vector<PhysDefs::SubscriptionGrp>& groups) = 0;

  // Notice of a change of the clock, so that the hardware can protect its time-outs from it. The
  // two calls come in pairs and do not nest.
  virtual void beginClockChange() = 0;
  virtual void endClockChange() = 0;

 protected:
  ~PhysicalInterfaceServiceIfc() = default;
};
