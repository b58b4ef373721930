#include "FigureTable.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "Measure.h"

// The table alone is looked at: nothing is measured here.
namespace bench {

void measureOneClient(Findings&) {}
void measureSixteenClients(Findings&) {}
void measureHandleMessage(Findings&) {}
void measureGetTime(Findings&) {}
void measureGetUtcTime(Findings&) {}
void measureSetData(Findings&) {}
void measureSyncs(Findings&) {}
void measureObservers(Findings&) {}
void measureSubscribers(Findings&) {}
void measureStart(Findings&) {}
void measureMemory(Findings&) {}
void measureArmSize(Findings&) {}
void measureQuietDay(Findings&) {}
void measureIdle(Findings&) {}
void measureYear(Findings&) {}
void measureNetworkYear(Findings&) {}
void measureWeekOfClients(Findings&) {}
void measureEventGrowth(Findings&) {}
void measureObserverGrowth(Findings&) {}
void measureAudienceGrowth(Findings&) {}
void measureClientGrowth(Findings&) {}
void measureTimerGrowth(Findings&) {}

}  // namespace bench

namespace {

std::map<std::string, std::string> boundsByName() {
  std::map<std::string, std::string> bounds;
  for (const bench::Figure& figure : bench::figures()) {
    bounds[figure.name] = figure.bound.text();
  }
  return bounds;
}

TEST(FigureTable, HasEachNameOnce) {
  EXPECT_EQ(boundsByName().size(), bench::figures().size());
}

TEST(FigureTable, HoldsEachFigureToItsBound) {
  const std::map<std::string, std::string> right{{"remote-p50", "<= 1.5 x"},
                                                 {"remote-p99", "<= 2 x"},
                                                 {"remote-16", ">= 0.6 x"},
                                                 {"handle-message", "<= + 0.6"},
                                                 {"get-time", "<= 1.25 x"},
                                                 {"get-time-virtual", "<= 1.25 x"},
                                                 {"get-time-beside", "-"},
                                                 {"get-time-heap", "= 0"},
                                                 {"get-utc-time", "<= 1.3 x"},
                                                 {"set-data", "<= 1.3 x"},
                                                 {"set-data-fewest-syncs", "= 1"},
                                                 {"set-data-folding", "<= 14"},
                                                 {"set-data-most-syncs", "= 1"},
                                                 {"observers-1000", "<= 2 x"},
                                                 {"subscribers-100", "<= 2 x"},
                                                 {"start-up", "<= 2 x"},
                                                 {"memory", "<= + 1024"},
                                                 {"arm-size", "<= 65536"},
                                                 {"quiet-day-wakes", "50 or 51"},
                                                 {"quiet-day-writes", "= 2"},
                                                 {"idle-wakes", "= 0"},
                                                 {"year", "<= 50"},
                                                 {"year-network", "<= 100"},
                                                 {"week-clients", "-"},
                                                 {"growth-events", "<= 1.1"},
                                                 {"growth-observers", "<= 1.1"},
                                                 {"growth-audience", "<= 1.1"},
                                                 {"growth-clients", "<= 1.1"},
                                                 {"growth-timers", "<= 1.1"}};
  EXPECT_EQ(boundsByName(), right);
}

// A machine that others use counts the same.
TEST(FigureTable, LetsNoCountBeWidened) {
  const std::set<std::string> counted{
      "get-time-heap", "set-data-fewest-syncs", "set-data-most-syncs", "set-data-folding", "memory",
      "arm-size",      "quiet-day-wakes",       "quiet-day-writes",    "idle-wakes"};
  for (const bench::Figure& figure : bench::figures()) {
    EXPECT_EQ(figure.bound.timed, !counted.contains(figure.name)) << figure.name;
  }
}

TEST(FigureTable, HasAFloorForWhatIsComparedWithOne) {
  using Kind = bench::Bound::Kind;
  for (const bench::Figure& figure : bench::figures()) {
    const Kind kind = figure.bound.kind;
    const bool compared = kind == Kind::ratioAtMost || kind == Kind::ratioAtLeast ||
                          kind == Kind::differenceAtMost || kind == Kind::none;
    EXPECT_EQ(*figure.floor != '\0', compared) << figure.name;
  }
}

}  // namespace
