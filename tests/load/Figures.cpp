#include "load/Figures.h"

namespace load {
namespace {

constexpr std::uint64_t kBound = 1024 * 1024;  // bytes that are queued for a client, and no more
constexpr std::uint64_t kNoticedLate =
    128 * 1024;  // bytes of a few moves, until it is seen to be gone

// What everybody else may notice of the stuck one. It is there for less than a hundred moves: of
// these nine in ten count, as a busy machine takes a processor away for a tenth of a second or so.
constexpr std::uint64_t kTimesAsLong = 5;
constexpr std::uint64_t kTakenAway = 200'000;  // microseconds

std::string complaintAboutService(const Service& service, const std::string& when) {
  if (service.moves == 0) return "the clock was not moved " + when;
  if (service.calls == 0) return "no call was answered " + when;
  return "";
}

std::string complaintAboutDelay(const char* of, std::uint64_t beside, std::uint64_t after) {
  if (beside <= kTimesAsLong * after + kTakenAway) return "";
  return std::string("the stuck subscriber is noticed: p90 of ") + of + ' ' +
         std::to_string(beside) + " us beside it, and " + std::to_string(after) + " us after it";
}

std::string complaintAboutTheStuckOne(const Figures& figures) {
  if (figures.stuckQueued > kBound && figures.stuckQueued <= kBound + kNoticedLate) return "";
  return "the stuck subscriber was dropped at " + std::to_string(figures.stuckQueued) + " bytes";
}

std::string complaintAboutMemory(const Figures& figures) {
  if (figures.mostMemory == 0) return "the host's memory was not looked at";
  if (figures.mostMemory - figures.leastMemory <= Figures::kLevel) return "";
  return "the host's memory went from " + std::to_string(figures.leastMemory) + " KiB to " +
         std::to_string(figures.mostMemory);
}

}  // namespace

std::string complaintAbout(const Figures& figures) {
  const std::string complaints[] = {
      figures.events == 0 ? "no event was heard" : "",
      complaintAboutService(figures.beside, "beside the stuck subscriber"),
      complaintAboutService(figures.after, "after the stuck subscriber"),
      complaintAboutTheStuckOne(figures),
      complaintAboutDelay("a move", figures.beside.heardP90, figures.after.heardP90),
      complaintAboutDelay("a call", figures.beside.callP90, figures.after.callP90),
      complaintAboutMemory(figures),
  };
  for (const std::string& complaint : complaints) {
    if (!complaint.empty()) return complaint;
  }
  return "";
}

std::string toText(const Figures& figures) {
  const auto line = [](const std::string& name, std::uint64_t number, const char* unit) {
    return "  " + name + ": " + std::to_string(number) + unit + "\n";
  };
  const auto lines = [&](const Service& service, const std::string& when) {
    return line("moves of the clock " + when, service.moves, "") +
           line("p90 until the last subscriber has heard of a move", service.heardP90, " us") +
           line("p99 until the last subscriber has heard of a move", service.heardP99, " us") +
           line("calls answered " + when, service.calls, "") +
           line("p50 of a call", service.callP50, " us") +
           line("p90 of a call", service.callP90, " us") +
           line("p99 of a call", service.callP99, " us");
  };
  return line("events that each subscriber heard once and in order", figures.events, "") +
         lines(figures.beside, "beside the stuck subscriber") +
         line("queued for it when it was dropped", figures.stuckQueued, " bytes") +
         lines(figures.after, "after it") +
         line("least memory of the host after warming up", figures.leastMemory, " KiB") +
         line("most", figures.mostMemory, " KiB");
}

}  // namespace load
