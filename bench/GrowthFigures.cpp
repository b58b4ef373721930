// How cost grows with the number of events, observers and timers in this process.
#include <algorithm>
#include <chrono>
#include <vector>

#include "Executable.h"
#include "Folder.h"
#include "GoogleBenchmark.h"
#include "Growth.h"
#include "Measure.h"
#include "Observers.h"
#include "Telephone.h"

namespace bench {
namespace {

class Sleeper : public Executable {
 public:
  void init(Context&) override {}
  void shutdown() override {}
};

// Timers of all periods, from their creation to their expiry and their end.
double costOfTimers(std::size_t count) {
  return processorNanoseconds([&](benchmark::State& state) {
    Sleeper owner;
    for (auto _ : state) {
      host::VirtualClock clock;
      std::vector<int> timers;
      for (std::size_t i = 0; i < count; ++i) {
        timers.push_back(clock.createTimer(owner, std::chrono::milliseconds(i * 7919 % 10'007)));
        clock.startTimer(timers.back());
      }
      clock.advance(std::chrono::seconds(20));
      for (const int timer : timers) clock.deleteTimer(timer);
    }
  });
}

// A telephone for each round: the virtual time of one ends after 200 years.
class QuietTelephone {
 public:
  [[nodiscard]] ClockServiceIfc& service() { return m_telephone.service(); }
  void pass(std::chrono::hours time) { m_telephone.clock().advance(time); }

 private:
  const Folder m_folder;
  host::MemoryDataAccess m_store;
  Telephone m_telephone{m_folder.path(), inMemory(m_store)};
};

// A full hour for each event.
double costOfEvents(std::size_t count) {
  QuietTelephone telephone;
  return processorNanoseconds([&](benchmark::State& state) {
    for (auto _ : state) telephone.pass(std::chrono::hours(count));
  });
}

void passHours(std::size_t hours, Observers& told, QuietTelephone& telephone,
               const std::vector<ClockServiceObserverIfc*>& calledAfter) {
  const Registration registration(telephone.service(), told);
  for (std::size_t i = 0; i < hours; ++i) {
    told.hourBegins();
    telephone.pass(std::chrono::hours(1));
    callEach(calledAfter, 0);
  }
}

// Without what leads to an hour that none of them hears: that hour comes after as many calls, so
// that it finds the caches as theirs does. Without the looks at the watch, too. Few observers are
// told of many hours. What one or ten of them add before the first is called cannot be told from
// the hour's own: then it counts as nothing.
double costOfObservers(std::size_t count) {
  constexpr std::size_t kMostHours = 10'000;
  const std::size_t hours = std::clamp<std::size_t>(200'000 / count, 100, kMostHours);
  QuietTelephone telephone;
  Observers observers(count);
  Observers none(0);
  passHours(hours, none, telephone, observers.all());
  const Observers::Hour without = none.takeHour();
  static_cast<void>(observers.takeHour());
  passHours(hours, observers, telephone, {});
  const Observers::Hour with = observers.takeHour();
  return with.between - without.between + std::max(0.0, with.before - without.before);
}

}  // namespace

void measureEventGrowth(Findings& findings) {
  findings["growth-events"] = growthOf(costOfEvents);
}

void measureObserverGrowth(Findings& findings) {
  findings["growth-observers"] = growthOf(costOfObservers);
}

void measureTimerGrowth(Findings& findings) {
  findings["growth-timers"] = growthOf(costOfTimers);
}

}  // namespace bench
