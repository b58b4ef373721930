#pragma once

#include <chrono>
#include <thread>

namespace support {

// Asks again and again until the condition holds; false when it does not within the limit.
template <class Condition>
bool becomesTrue(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds{30}) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace support
