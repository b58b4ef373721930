#pragma once

#include <cstdint>
#include <string>

#include "support/Sanitizers.h"

namespace load {

// How people were served for a while.
struct Service {
  std::uint64_t moves = 0;     // of the clock
  std::uint64_t heardP90 = 0;  // microseconds from the move until the last subscriber has heard
  std::uint64_t heardP99 = 0;
  std::uint64_t calls = 0;
  std::uint64_t callP50 = 0;  // microseconds
  std::uint64_t callP90 = 0;
  std::uint64_t callP99 = 0;
};

// What was met.
struct Figures {
  // How far the host's own memory may move after warming up, in KiB. A sanitizer keeps what was
  // freed.
  static constexpr bool kWatched = support::kAddressSanitizer || support::kThreadSanitizer;
  static constexpr std::uint64_t kLevel = kWatched ? 1024 * 1024 : 384;

  Service beside;                 // the stuck subscriber
  Service after;                  // it was dropped
  std::uint64_t events = 0;       // that each subscriber has heard
  std::uint64_t stuckQueued = 0;  // bytes that were queued for the stuck one when it was dropped
  std::uint64_t leastMemory = 0;  // KiB of the host, after warming up
  std::uint64_t mostMemory = 0;
};

// What is wrong with them; empty when they are as they are due. Nothing looked at is wrong, too.
[[nodiscard]] std::string complaintAbout(const Figures& figures);

// One line for each figure.
[[nodiscard]] std::string toText(const Figures& figures);

}  // namespace load
