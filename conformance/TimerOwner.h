#pragma once

#include <functional>
#include <vector>

#include "Executable.h"

namespace conformance {

// An owner of timers that records their expiries.
class TimerOwner final : public Executable {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void timerEvent(int timer) override {
    expired.push_back(timer);
    if (onTimer) onTimer(timer);
  }

  std::vector<int> expired;
  std::function<void(int)> onTimer;  // called after the expiry is recorded
};

}  // namespace conformance
