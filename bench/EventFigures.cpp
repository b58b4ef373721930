// Telling of an event: to objects of this process, and over a hundred sockets.
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "HostProgram.h"
#include "Measure.h"
#include "Observers.h"
#include "Subscribers.h"
#include "Telephone.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t kObservers = 1000;
constexpr std::size_t kSubscribers = 100;
constexpr std::size_t kEvents = 200;
constexpr std::size_t kHours = 1000;           // of a round
constexpr std::size_t kRoundsOfTelling = 101;  // short ones
constexpr double kPerMicrosecond = 1000;

// From the beginning of the hour to the last observer: what is done with all of them before the
// first is called is part of telling them.
double costOfTelling(Observers& observers, Telephone& telephone) {
  const Registration registration(telephone.service(), observers);
  for (std::size_t i = 0; i < kHours; ++i) {
    observers.hourBegins();
    telephone.clock().advance(std::chrono::hours(1));
  }
  return observers.takeHour().whole;
}

struct WithoutTelling {
  double leads;  // to an hour that nobody but the watch hears of
  double calls;
};

// The calls come right after such an hour, and the hour after such calls: both find the caches as
// those do that are told of it.
WithoutTelling costWithout(Observers& observers, Telephone& telephone) {
  const auto list = observers.all();
  Observers none(0);
  const Registration registration(telephone.service(), none);
  for (std::size_t i = 0; i < kHours; ++i) {
    none.hourBegins();
    telephone.clock().advance(std::chrono::hours(1));
    callEach(list, 0);
  }
  return {none.takeHour().before, observers.takeHour().between};
}

void compareTelling(Observers& observers, Telephone& telephone, Rounds& rounds) {
  const WithoutTelling without = costWithout(observers, telephone);
  const double telling = costOfTelling(observers, telephone) - without.leads;
  if (telling <= 0) throw std::runtime_error("telling is lost in what is around it");
  rounds.add(telling / kPerMicrosecond, without.calls / kPerMicrosecond);
}

double hostsEvent(const Subscribers& all) {
  const std::string request = Subscribers::hourPasses();
  const auto begin = Clock::now();
  all.control().send(request);
  static_cast<void>(all.takeTimeEvent());
  const double taken = Microseconds(Clock::now() - begin).count();
  static_cast<void>(all.control().takeFrame());
  return taken;
}

double floorsEvent(const Subscribers& all, const std::string& event) {
  const auto begin = Clock::now();
  all.control().send(event);
  for (const Line& line : all.lines()) static_cast<void>(line.takeFrame());
  const double taken = Microseconds(Clock::now() - begin).count();
  static_cast<void>(all.control().takeFrame());
  return taken;
}

std::string anEvent(const Subscribers& all) {
  all.control().send(Subscribers::hourPasses());
  std::string event = all.takeTimeEvent();
  static_cast<void>(all.control().takeFrame());
  return event;
}

}  // namespace

void measureObservers(Findings& findings) {
  const Folder folder;
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), inMemory(store));
  Observers observers(kObservers);
  Rounds rounds;
  for (std::size_t i = 0; i < kRoundsOfTelling; ++i) compareTelling(observers, telephone, rounds);
  findings["observers-1000"] = ratioOf(rounds);
}

void measureSubscribers(Findings& findings) {
  const Folder folder;
  const HostProgram host(folder, folder / "state", {"--speed", "0"});
  const FloorProgram fan(folder, "fan", {std::to_string(kSubscribers)});
  Subscribers atHost(host);
  Subscribers atFan(fan);
  atHost.connect(kSubscribers);
  atHost.subscribe();
  atFan.connect(kSubscribers);
  const std::string event = anEvent(atHost);
  findings["subscribers-100"] = ratioOf(Rounds::alternate(
      [&] { return hostsEvent(atHost); }, [&] { return floorsEvent(atFan, event); }, kEvents));
}

}  // namespace bench
