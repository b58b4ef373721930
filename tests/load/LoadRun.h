#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "load/Latencies.h"
#include "support/Sanitizers.h"

namespace load {

struct Size {
  std::size_t subscribers = 500;
  int callers = 64;
  std::chrono::milliseconds duration{60'000};
  std::chrono::milliseconds warmUp{10'000};  // until the host's memory is level
};

// How clients were served for a while.
struct Service {
  Latencies moves;  // of the clock: from the request until the last subscriber has its events
  Latencies calls;
};

struct LoadFigures {
  // How much the host's own memory may change after warm-up, in KiB. A sanitizer keeps freed
  // memory.
  static constexpr bool kSanitized = support::kAddressSanitizer || support::kThreadSanitizer;
  static constexpr std::uint64_t kMemoryChange = kSanitized ? 1024 * 1024 : 384;

  Service whileStuck;             // while the stuck subscriber was connected
  Service afterDrop;              // after the host dropped it
  std::uint64_t events = 0;       // received by each subscriber
  std::uint64_t stuckQueued = 0;  // bytes queued for the stuck subscriber when it was dropped
  std::uint64_t leastMemory = 0;  // KiB of the host, after warm-up
  std::uint64_t mostMemory = 0;
};

// Runs many subscribers and callers against one host. One subscriber is stuck: it never reads.
// Another is slow: it reads now and then. Throws when an event or an answer is missing or wrong,
// when the stuck subscriber is not dropped, and when the host logs anything but that drop.
[[nodiscard]] LoadFigures loadAHost(const Size& size);

// The first figure that is beyond its bound or was not measured; empty: none.
[[nodiscard]] std::string complaintAbout(const LoadFigures& figures);

// One line for each figure.
[[nodiscard]] std::string toText(const LoadFigures& figures);

}  // namespace load
