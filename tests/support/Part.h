#pragma once

#include <functional>

#include "Executable.h"

namespace support {

// A part of the framework with nothing to start or stop: a service, or an owner of timers.
class Part : public Executable {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void timerEvent(int timer) override {
    if (onTimer) onTimer(timer);
  }

  std::function<void(int timer)> onTimer;
};

}  // namespace support
