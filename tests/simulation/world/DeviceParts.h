#pragma once

#include <atomic>
#include <functional>

#include "simulation/DeviceRandom.h"
#include "simulation/Journal.h"

namespace simulation {

// What this program puts in the place of the platform's processes, threads and bounded lookups and
// of the C library's resolver, random numbers and disk: nothing here starts a program, asks another
// machine, or waits for a disk.
// Owner: the process. Set by the world before a service lives in it.
struct DeviceParts {
  Journal* journal = nullptr;
  std::atomic<bool> launchFails{false};
  std::atomic<bool> lookupsFail{false};
  DeviceRandom random;
  std::function<void()> beforeWaiting;  // somebody is about to wait for the end of a thread
};

[[nodiscard]] DeviceParts& deviceParts();

}  // namespace simulation
