#include "FigureTable.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Measure.h"

namespace bench {
namespace {

using Kind = Bound::Kind;

constexpr Bound ratioAtMost(double limit) {
  return {Kind::ratioAtMost, limit};
}
constexpr Bound countRatioAtMost(double limit) {
  return {Kind::ratioAtMost, limit, false};
}
constexpr Bound ratioAtLeast(double limit) {
  return {Kind::ratioAtLeast, limit};
}
constexpr Bound countMoreByAtMost(double limit) {
  return {Kind::differenceAtMost, limit, false};
}
constexpr Bound countAtMost(double limit) {
  return {Kind::atMost, limit, false};
}
constexpr Bound printed() {
  return {Kind::none, 0};
}
constexpr Bound exactly(double count) {
  return {Kind::exactly, count, false};
}

// docs/explanation/performance.md gives the reason for each bound.
constexpr auto kFigures = std::to_array<Figure>({
    {"remote-p50", "remote getTime, median", "echo of 100 bytes", "us", ratioAtMost(1.3), 31,
     measureRemoteMedian},
    {"remote-p99", "remote getTime, 99th percentile", "echo of 100 bytes", "us", ratioAtMost(1.5),
     31, measureRemoteTail},
    {"remote-16", "remote getTime, 16 clients at once", "echo, 16 clients", "/s", ratioAtLeast(0.8),
     11, measureSixteenClients},
    {"remote-16-syscalls", "remote getTime, 16 clients, system calls", "", "", countAtMost(2.2), 3,
     measureSixteenClientsSystemCalls},
    {"pipeline-32", "remote getTime, 32 in flight", "one at a time", "/s", ratioAtLeast(4), 11,
     measurePipeline},
    {"pipeline-syscalls", "32 getTime in flight, system calls", "", "", countAtMost(3.2), 3,
     measurePipelineSystemCalls},
    {"call-syscalls", "remote getTime, system calls", "", "", exactly(3), 3,
     measureCallSystemCalls},
    {"call-allocations", "remote getTime, heap allocations", "", "", countAtMost(3), 3,
     measureCallAllocations},
    {"subscribers-100", "event to 100 remote subscribers", "100 sends", "us", ratioAtMost(1.3), 11,
     measureSubscribers},
    {"event-syscalls", "event to 100 subscribers, system calls", "", "", countAtMost(105), 3,
     measureEventSystemCalls},
    {"set-constant", "echo and an unsynced row after a sync", "", "us", printed(), 11,
     measureSetConstant},
    {"set-data", "accepted set on disk, less set-constant", "SQLite alone", "us", ratioAtMost(1.2),
     41, measureSet},
    {"set-syscalls", "accepted set, system calls", "", "", countAtMost(13), 3,
     measureSetSystemCalls},
    {"set-allocations", "accepted set, heap allocations", "", "", countAtMost(60), 3,
     measureSetAllocations},
    {"set-syncs", "accepted set, syncs", "", "", exactly(1), 3, measureSetSyncs},
    {"day-syncs", "day without a time server, syncs", "", "", exactly(2), 3, measureDaySyncs},
    {"start-up", "start to first reply", "minimal program", "ms", ratioAtMost(1.4), 21,
     measureStart},
    // 160 KiB, and a page: which pages the two programs touch depends on the machine, too.
    {"memory", "memory after start, private and dirty", "minimal program", "KiB",
     countMoreByAtMost(164), 11, measureMemory},
    {"idle", "idle host for 2 s, system calls", "", "", exactly(0), 3, measureIdle},
    {"get-time", "getTime() in process", "time, localtime_r, print", "ns", ratioAtMost(1), 11,
     measureGetTime},
    {"get-time-instructions", "getTime() in process, instructions", "time, localtime_r, print", "",
     countRatioAtMost(0.75), 3, measureGetTimeInstructions},
    // + 0.35 us where getTime() takes 0.095: the same on a slower processor.
    {"message", "message of getTime in process", "getTime()", "us", ratioAtMost(4.7), 11,
     measureMessage},
    {"message-instructions", "message of getTime in process, instructions", "getTime()", "",
     countMoreByAtMost(4500), 3, measureMessageInstructions},
});

constexpr bool nameIsUnique(const Figure& figure) {
  return std::ranges::count(kFigures, std::string_view(figure.name), &Figure::name) == 1;
}
constexpr bool baselineFitsBound(const Figure& figure) {
  const Kind kind = figure.bound.kind;
  const bool alone = kind == Kind::atMost || kind == Kind::exactly || kind == Kind::none;
  return std::string_view(figure.baseline).empty() == alone;
}
constexpr bool hasStatistics(const Figure& figure) {
  return figure.repetitions >= 2;
}

static_assert(std::ranges::all_of(kFigures, nameIsUnique));
static_assert(std::ranges::all_of(kFigures, baselineFitsBound));
static_assert(std::ranges::all_of(kFigures, hasStatistics));

}  // namespace

std::span<const Figure> figures() {
  return kFigures;
}

}  // namespace bench
