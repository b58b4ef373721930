#include <atomic>

#include "clock/VirtualClock.h"

namespace host {
namespace {

constinit std::atomic<VirtualClock*> g_clock{nullptr};

}  // namespace

void setProcessClock(VirtualClock* clock) noexcept {
  g_clock.store(clock, std::memory_order_release);
}

VirtualClock* processClock() noexcept {
  return g_clock.load(std::memory_order_acquire);
}

}  // namespace host
