// The bounds of the figures of a load, and their text.
#include "load/LoadRun.h"

namespace load {
namespace {

constexpr std::uint64_t kMostQueued = 1024 * 1024;  // bytes for one client
constexpr std::uint64_t kSentUntilSeen =
    128 * 1024;  // bytes; the test sees the drop a few moves late

// How much the stuck subscriber may delay the others: kDelayFactor times, plus kPreempted, because
// a busy machine may run another program for a tenth of a second. The 90th percentile counts: the
// stuck subscriber is connected for fewer than a hundred moves.
constexpr std::uint64_t kDelayFactor = 5;
constexpr std::uint64_t kPreempted = 200'000;  // microseconds

std::string complaintAboutDelay(const char* of, const Latencies& during, const Latencies& after) {
  if (during.count() == 0 || after.count() == 0) return std::string("not measured: ") + of;
  const std::uint64_t most = kDelayFactor * after.quantile(0.9) + kPreempted;
  if (during.quantile(0.9) <= most) return "";
  return std::string("the stuck subscriber delays others: p90 of ") + of + " is " +
         std::to_string(during.quantile(0.9)) + " us, the bound is " + std::to_string(most) + " us";
}

std::string complaintAboutQueue(std::uint64_t queued) {
  if (queued > kMostQueued && queued <= kMostQueued + kSentUntilSeen) return "";
  return "the stuck subscriber was dropped at " + std::to_string(queued) + " bytes";
}

std::string complaintAboutMemory(const LoadFigures& figures) {
  if (figures.mostMemory == 0) return "not measured: the host's memory";
  if (figures.mostMemory - figures.leastMemory <= LoadFigures::kMemoryChange) return "";
  return "the host's memory went from " + std::to_string(figures.leastMemory) + " KiB to " +
         std::to_string(figures.mostMemory);
}

std::string line(const std::string& name, std::uint64_t number, const char* unit = "") {
  return "  " + name + ": " + std::to_string(number) + unit + "\n";
}

std::string lines(const std::string& name, const Latencies& latencies) {
  return line(name, latencies.count()) + line("  p50", latencies.quantile(0.5), " us") +
         line("  p90", latencies.quantile(0.9), " us") +
         line("  p99", latencies.quantile(0.99), " us");
}

}  // namespace

std::string complaintAbout(const LoadFigures& figures) {
  const std::string complaints[] = {
      figures.events == 0 ? "not measured: events" : "",
      complaintAboutQueue(figures.stuckQueued),
      complaintAboutDelay("a move", figures.whileStuck.moves, figures.afterDrop.moves),
      complaintAboutDelay("a call", figures.whileStuck.calls, figures.afterDrop.calls),
      complaintAboutMemory(figures),
  };
  for (const std::string& complaint : complaints) {
    if (!complaint.empty()) return complaint;
  }
  return "";
}

std::string toText(const LoadFigures& figures) {
  return line("events that each subscriber received once and in order", figures.events) +
         lines("moves of the clock while a subscriber is stuck", figures.whileStuck.moves) +
         lines("calls while a subscriber is stuck", figures.whileStuck.calls) +
         line("queued for the stuck subscriber when it was dropped", figures.stuckQueued,
              " bytes") +
         lines("moves of the clock after the drop", figures.afterDrop.moves) +
         lines("calls after the drop", figures.afterDrop.calls) +
         line("least memory of the host after warm-up", figures.leastMemory, " KiB") +
         line("most memory of the host after warm-up", figures.mostMemory, " KiB");
}

}  // namespace load
