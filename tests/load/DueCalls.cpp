#include "load/DueCalls.h"

#include <stdexcept>

#include "support/Interruption.h"

namespace load {
Latencies callWhenDue(CallLine& line, std::chrono::milliseconds duration) {
  Latencies latencies;
  const auto begin = line.now();
  const auto due = [begin](std::uint64_t call) { return begin + call * kBetweenCalls; };
  const auto count = static_cast<std::uint32_t>(duration / kBetweenCalls);
  std::uint32_t sent = 0;
  while (latencies.count() < count && support::Interruption::signal() == 0) {
    for (; sent < count && due(sent) <= line.now(); ++sent) line.call(sent);
    const auto limit = due(latencies.count()) + kAnswerLimit;  // of the oldest unanswered call
    if (const auto call = line.replied(sent < count ? due(sent) : limit)) {
      latencies.add(line.now() - due(*call));
    } else if (line.now() >= limit) {
      throw std::runtime_error("the bystanders are not answered");
    }
  }
  return latencies;
}

}  // namespace load
