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

  // From now on the observer hears the events of these groups, until the service is taken down. The
  // observer is not owned.
  virtual void subscribe(physicalEventObserver* observer,
                         const std::vector<PhysDefs::SubscriptionGrp>& groups) = 0;

  // Notice of a change of the clock: the hardware keeps its own time-outs out of it. The two calls
  // come in pairs and do not nest.
  virtual void beginClockChange() = 0;
  virtual void endClockChange() = 0;

 protected:
  ~PhysicalInterfaceServiceIfc() = default;
};
