#include <atomic>
#include <stdexcept>

#include "clock/VirtualClock.h"

namespace host {

namespace {

constinit std::atomic<VirtualClock*> g_clock{nullptr};

}  // namespace

VirtualClock& processClock() {
  VirtualClock* clock = processClockIfAny();
  if (clock == nullptr) throw std::logic_error("the process has no clock of its own");
  return *clock;
}

VirtualClock* processClockIfAny() noexcept {
  return g_clock.load(std::memory_order_acquire);
}

void setProcessClock(VirtualClock* clock) {
  g_clock.store(clock, std::memory_order_release);
}

}  // namespace host
