#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "load/Effects.h"

namespace load {

// What bystanders met while a host was attacked, and how the host ended.
struct AttackFigures {
  std::uint64_t calls = 0;    // of the bystanders
  std::uint64_t callP50 = 0;  // microseconds
  std::uint64_t callP99 = 0;
  std::uint64_t mostWaited = 0;
  int connections = 0;      // of the attackers
  std::int64_t ended = -1;  // milliseconds after SIGTERM, in the middle of it all; -1: not in time
  Effects effects{};        // of the attacks, at the end of the calls
};

// All attacks at once against one host, for so long. Throws when there is no host.
[[nodiscard]] AttackFigures attackAHost(std::chrono::milliseconds duration);

// What is wrong with them: the bystanders' 99th of 100 calls took longer than `mostP99`
// microseconds, the host did not end within two seconds, or an attack had no effect. Empty:
// nothing.
[[nodiscard]] std::string complaintAbout(const AttackFigures& figures, std::uint64_t mostP99);

[[nodiscard]] std::string toText(const AttackFigures& figures);

// On a machine that has nothing else to do.
inline constexpr std::uint64_t kMostP99 = 50'000;

}  // namespace load
