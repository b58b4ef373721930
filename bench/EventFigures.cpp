// Telling of an event: to objects of this process, and over a hundred sockets.
#include <chrono>
#include <string>
#include <vector>

#include "GoogleBenchmark.h"
#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"
#include "Observers.h"
#include "Telephone.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t kObservers = 1000;
constexpr std::size_t kSubscribers = 100;
constexpr std::size_t kEvents = 200;
constexpr double kPerMicrosecond = 1000;

// A full hour and the restart of the NTP client that it brings, and then something else.
template <class Then>
double costOfAnHourAnd(Telephone& telephone, Then then) {
  return processorNanoseconds([&](benchmark::State& state) {
    for (auto _ : state) {
      telephone.clock().advance(std::chrono::hours(1));
      then();
    }
  });
}

double costOfAnHour(Telephone& telephone) {
  return costOfAnHourAnd(telephone, [] {});
}

double costOfAnHourFor(Observers& observers, Telephone& telephone) {
  const Registration registration(telephone.service(), observers);
  return costOfAnHour(telephone);
}

double costOfAnHourAndCalling(const std::vector<ClockServiceObserverIfc*>& observers,
                              Telephone& telephone) {
  int hours = 0;
  return costOfAnHourAnd(telephone, [&] {
    callEach(observers, ++hours);
    benchmark::ClobberMemory();
  });
}

// Those who have subscribed at a host; the first of its connections works its clock.
struct Subscribers {
  explicit Subscribers(const std::filesystem::path& socket) : control(socket) {
    lines.reserve(kSubscribers);
    for (std::size_t i = 0; i < kSubscribers; ++i) lines.emplace_back(socket);
  }
  void subscribe() const {
    for (const Line& line : lines) {
      line.send(callOf("observeTimeEvents"));
      static_cast<void>(line.takeFrame());
    }
  }

  Line control;
  std::vector<Line> lines;
};

bool isTimeEvent(const std::string& frame) {
  return frame.find("timeChangeEvent") != std::string::npos;
}

// The event of the next full hour, until all have it. Midnight's date comes behind its hour: it is
// passed over by whoever waits for the next hour.
std::string takeTimeEvent(const Line& line) {
  std::string bytes;
  while (!isTimeEvent(bytes)) bytes = line.takeFrame().bytes;
  return bytes;
}

double hostsEvent(const Subscribers& all) {
  const std::string request = controlOf(R"({"verb":"clock","action":"advance","seconds":3600})");
  const auto begin = Clock::now();
  all.control.send(request);
  for (const Line& line : all.lines) static_cast<void>(takeTimeEvent(line));
  const double taken = Microseconds(Clock::now() - begin).count();
  static_cast<void>(all.control.takeFrame());
  return taken;
}

double floorsEvent(const Subscribers& all, const std::string& event) {
  const auto begin = Clock::now();
  all.control.send(event);
  for (const Line& line : all.lines) static_cast<void>(line.takeFrame());
  const double taken = Microseconds(Clock::now() - begin).count();
  static_cast<void>(all.control.takeFrame());
  return taken;
}

std::string anEvent(const Subscribers& all) {
  all.control.send(controlOf(R"({"verb":"clock","action":"advance","seconds":3600})"));
  std::string event;
  for (const Line& line : all.lines) event = takeTimeEvent(line);
  static_cast<void>(all.control.takeFrame());
  return event;
}

}  // namespace

// What a thousand observers add to the hour, which also arms timers and asks for the time; and what
// calling them adds that does not observe, so that both find the caches in the same state.
void measureObservers(Findings& findings) {
  const Folder folder;
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), inMemory(store));
  Observers observers(kObservers);
  const auto list = observers.all();
  Rounds rounds;
  for (std::size_t i = 0; i < Rounds::kUsual; ++i) {
    const double alone = costOfAnHour(telephone);
    const double called = costOfAnHourAndCalling(list, telephone);
    const double told = costOfAnHourFor(observers, telephone);
    rounds.add((told - alone) / kPerMicrosecond, (called - alone) / kPerMicrosecond);
  }
  findings["observers-1000"] = ratioOf(rounds);
}

void measureSubscribers(Findings& findings) {
  const Folder folder;
  const HostProgram host(folder, folder / "state", {"--speed", "0"});
  const FloorProgram fan(folder, "fan", {std::to_string(kSubscribers)});
  const Subscribers atHost(host.socket());
  const Subscribers atFan(fan.socket());
  atHost.subscribe();
  const std::string event = anEvent(atHost);
  findings["subscribers-100"] = ratioOf(Rounds::alternate(
      [&] { return hostsEvent(atHost); }, [&] { return floorsEvent(atFan, event); }, kEvents));
}

}  // namespace bench
