#include "FigureTable.h"

#include <array>

#include "Measure.h"

namespace bench {
namespace {

constexpr Bound ratioAtMost(double limit) {
  return {Bound::Kind::ratioAtMost, limit};
}
constexpr Bound ratioAtLeast(double limit) {
  return {Bound::Kind::ratioAtLeast, limit};
}
constexpr Bound addsAtMost(double limit) {
  return {Bound::Kind::differenceAtMost, limit};
}
constexpr Bound atMost(double limit) {
  return {Bound::Kind::atMost, limit};
}
constexpr Bound exponentAtMost(double limit) {
  return {Bound::Kind::exponentAtMost, limit};
}
// Counted, not timed.
constexpr Bound countedAtMost(double limit) {
  return {Bound::Kind::atMost, limit, 0, false};
}
constexpr Bound addsCountedAtMost(double limit) {
  return {Bound::Kind::differenceAtMost, limit, 0, false};
}
constexpr Bound exactly(double least, double most) {
  return {Bound::Kind::between, most, least, false};
}

constexpr Bound disclosed() {
  return {Bound::Kind::none, 0};
}

constexpr double kArmBytes = 65536;
constexpr double kKibibytesMore = 1024;
constexpr double kNearlyLinear = 1.1;

// All that is held to a bound.
constexpr auto kFigures = std::to_array<Figure>({
    {"remote-p50", "remote getTime, one client, half of the calls", "echo of 100 bytes", "us",
     ratioAtMost(1.5), measureOneClient},
    {"remote-p99", "the same, 99 of 100 calls", "the same", "us", ratioAtMost(2), measureOneClient},
    {"remote-16", "remote getTime, 16 clients, calls a second", "echo, 16 clients", "/s",
     ratioAtLeast(0.6), measureSixteenClients},
    {"handle-message", "message of getTime, in process", "getTime()", "us", addsAtMost(0.6),
     measureHandleMessage},
    {"get-time", "getTime()", "libc's time, localtime_r, print", "ns", ratioAtMost(1.25),
     measureGetTime},
    {"get-time-virtual", "the same, the host's virtual clock", "the same, that clock", "ns",
     ratioAtMost(1.25), measureGetTime},
    {"get-time-beside", "the same, the host's virtual clock", "the C library's time", "ns",
     disclosed(), measureGetTime},
    {"get-time-heap", "getTime(): allocations", "", "", exactly(0, 0), measureGetTime},
    {"get-utc-time", "getUTCTime(n)", "gmtime_r, print", "ns", ratioAtMost(1.3), measureGetUtcTime},
    {"set-data", "accepted set, to the reply, on disk", "SQLite alone", "us", ratioAtMost(1.3),
     measureSetData},
    {"set-data-fewest-syncs", "accepted set: syncs, the fewest", "", "", exactly(1, 1),
     measureSyncs},
    {"set-data-most-syncs", "the same, the most", "", "", exactly(1, 1), measureSyncs},
    {"set-data-folding", "2,340 sets: syncs besides, for folding", "", "", countedAtMost(14),
     measureSyncs},
    {"observers-1000", "event to 1,000 observers in process", "1,000 virtual calls", "us",
     ratioAtMost(2), measureObservers},
    {"subscribers-100", "event to 100 remote subscribers", "100 sends", "us", ratioAtMost(2),
     measureSubscribers},
    {"start-up", "start to the first reply", "small program", "ms", ratioAtMost(2), measureStart},
    {"memory", "memory after the start, private and written", "small program", "KiB",
     addsCountedAtMost(kKibibytesMore), measureMemory},
    {"arm-size", "plug-in for ARM, -Os, stripped", "", "bytes", countedAtMost(kArmBytes),
     measureArmSize},
    {"quiet-day-wakes", "quiet day: timers that expire", "", "", exactly(50, 51), measureQuietDay},
    {"quiet-day-writes", "quiet day: transactions", "", "", exactly(2, 2), measureQuietDay},
    {"idle-wakes", "idle host, two seconds: wake-ups", "", "", exactly(0, 0), measureIdle},
    {"year", "simulated year, no network", "", "ms", atMost(50), measureYear},
    {"year-network", "the same, network up, client restarts", "", "ms", atMost(100),
     measureNetworkYear},
    {"week-clients", "week with its 168 clients started", "starting those alone", "ms", disclosed(),
     measureWeekOfClients},
    {"growth-events", "events, 1 to 10,000: exponent of cost", "", "",
     exponentAtMost(kNearlyLinear), measureEventGrowth},
    {"growth-observers", "observers of an event: the same", "", "", exponentAtMost(kNearlyLinear),
     measureObserverGrowth},
    {"growth-audience", "remote subscribers of an event: the same", "", "",
     exponentAtMost(kNearlyLinear), measureAudienceGrowth},
    {"growth-clients", "clients that come and go: the same", "", "", exponentAtMost(kNearlyLinear),
     measureClientGrowth},
    {"growth-timers", "timers: the same", "", "", exponentAtMost(kNearlyLinear),
     measureTimerGrowth},
});

}  // namespace

std::span<const Figure> figures() {
  return kFigures;
}

}  // namespace bench
