#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "load/Attackers.h"
#include "load/Latencies.h"

namespace load {

// How bystanders were served while a host was attacked, and how the host ended.
struct AttackFigures {
  Latencies calls;          // of the bystanders
  int connections = 0;      // of the attackers
  std::int64_t ended = -1;  // milliseconds after SIGTERM, under attack; -1: not in time
  Effects effects{};        // of the attacks
};

// All attacks at once against one host. Throws when there is no host.
[[nodiscard]] AttackFigures attackAHost(std::chrono::milliseconds duration);

// What is wrong with them: the bystanders' p99 is more than `mostP99` microseconds, the host did
// not end within two seconds, or an attack had no effect. Empty: nothing.
[[nodiscard]] std::string complaintAbout(const AttackFigures& figures, std::uint64_t mostP99);

[[nodiscard]] std::string toText(const AttackFigures& figures);

// On a machine that has nothing else to do.
inline constexpr std::uint64_t kMostP99 = 50'000;

}  // namespace load
