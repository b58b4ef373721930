// What the figures of a load must be, and how they are shown.
#include "load/LoadRun.h"

namespace load {
namespace {

constexpr std::uint64_t kMostQueued = 1024 * 1024;  // bytes for one client
constexpr std::uint64_t kNoticedLate = 128 * 1024;  // bytes of a few moves, until the drop is seen

// How much the stuck subscriber may delay the others. It is there for fewer than a hundred moves:
// of these nine in ten count, since a busy machine takes the processor away for a tenth of a
// second.
constexpr std::uint64_t kTimesAsLong = 5;
constexpr std::uint64_t kTakenAway = 200'000;  // microseconds

std::string complaintAboutDelay(const char* of, const Latencies& beside, const Latencies& after) {
  if (beside.count() == 0 || after.count() == 0) return std::string("not measured: ") + of;
  const std::uint64_t most = kTimesAsLong * after.quantile(0.9) + kTakenAway;
  if (beside.quantile(0.9) <= most) return "";
  return std::string("the stuck subscriber delays others: p90 of ") + of + " is " +
         std::to_string(beside.quantile(0.9)) + " us beside it, at most " + std::to_string(most) +
         " are due";
}

std::string complaintAboutQueue(std::uint64_t queued) {
  if (queued > kMostQueued && queued <= kMostQueued + kNoticedLate) return "";
  return "the stuck subscriber was dropped at " + std::to_string(queued) + " bytes";
}

std::string complaintAboutMemory(const LoadFigures& figures) {
  if (figures.mostMemory == 0) return "not measured: the host's memory";
  if (figures.mostMemory - figures.leastMemory <= LoadFigures::kLevel) return "";
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
      complaintAboutDelay("a move", figures.beside.moves, figures.after.moves),
      complaintAboutDelay("a call", figures.beside.calls, figures.after.calls),
      complaintAboutMemory(figures),
  };
  for (const std::string& complaint : complaints) {
    if (!complaint.empty()) return complaint;
  }
  return "";
}

std::string toText(const LoadFigures& figures) {
  return line("events that each subscriber received once and in order", figures.events) +
         lines("moves of the clock beside the stuck subscriber", figures.beside.moves) +
         lines("calls beside it", figures.beside.calls) +
         line("queued for it when it was dropped", figures.stuckQueued, " bytes") +
         lines("moves of the clock after it", figures.after.moves) +
         lines("calls after it", figures.after.calls) +
         line("least memory of the host after warm-up", figures.leastMemory, " KiB") +
         line("most", figures.mostMemory, " KiB");
}

}  // namespace load
