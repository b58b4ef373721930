#pragma once

#include <vector>

#include "Executable.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "base/Mutex.h"

namespace host {

// The telephone's hardware: its variant, its jacks, and its count of clock changes.
// Owner: the device. Thread: any; jack() only on the framework thread. It calls the subscribers
// without holding a lock.
class PhysicalInterface : public Executable, public PhysicalInterfaceServiceIfc {
 public:
  // The kind of the subscription groups for jack events.
  static constexpr int kJackKind = 1;
  struct ClockChanges {
    int begun = 0;
    int ended = 0;
  };

  // variant: the hardware sub-variant, any number.
  explicit PhysicalInterface(int variant);

  void init(Context&) override {}
  void shutdown() override {}

  PhysDefs::hardwareSubVariant getHardwareSubVariant() override;
  void subscribe(physicalEventObserver* observer,
                 const std::vector<PhysDefs::SubscriptionGrp>& groups) override;
  void beginClockChange() override;
  void endClockChange() override;

  // Notifies each subscriber to a group of kind 1 that a jack was plugged in (status 1) or
  // unplugged (0). Other numbers are passed on unchanged.
  void jack(int plug, int status);

  [[nodiscard]] ClockChanges clockChanges() const;

  // REQUIRES: no jack event is in progress.
  void dropSubscribers();

 private:
  const PhysDefs::hardwareSubVariant m_variant;
  mutable Mutex m_mutex;
  std::vector<physicalEventObserver*> m_jackObservers
      CLOCK_GUARDED_BY(m_mutex);  // in order of subscription
  ClockChanges m_clockChanges CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
