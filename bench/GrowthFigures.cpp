// How cost grows with the number of events, observers, clients and timers. 1: each costs the same,
// however many there are.
#include <sys/resource.h>
#include <time.h>

#include <array>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "Executable.h"
#include "GoogleBenchmark.h"
#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"
#include "Observers.h"
#include "Telephone.h"

namespace bench {
namespace {

constexpr std::array<std::size_t, 5> kNumbers{1, 10, 100, 1000, 10'000};
constexpr std::size_t kHundred = 2;  // its place among them
constexpr std::size_t kRoundsOfGrowth = 3;
constexpr std::size_t kClientsOfARound = 1000;  // at least, so that few are counted often

using Costs = std::array<double, kNumbers.size()>;

// The slope of the straight line through the logarithms.
double exponentOf(const Costs& costs, std::size_t first) {
  const auto count = static_cast<double>(kNumbers.size() - first);
  double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
  for (std::size_t i = first; i < kNumbers.size(); ++i) {
    const double x = std::log(static_cast<double>(kNumbers.at(i)));
    const double y = std::log(costs.at(i));
    sumX += x;
    sumY += y;
    sumXX += x * x;
    sumXY += x * y;
  }
  return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

// cost: of that many, in any unit. first: of the numbers that count; the smaller ones are left out
// where something that is always there would cover the growth.
Measured growthOf(const std::function<double(std::size_t)>& cost, std::size_t first = 0) {
  std::array<std::vector<double>, kNumbers.size()> found;
  for (std::size_t round = 0; round < kRoundsOfGrowth; ++round) {
    for (std::size_t i = first; i < kNumbers.size(); ++i) {
      found.at(i).push_back(cost(kNumbers.at(i)));
    }
  }
  Costs costs{};
  for (std::size_t i = first; i < kNumbers.size(); ++i) costs.at(i) = median(found.at(i));
  return alone(exponentOf(costs, first));
}

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

double processorSeconds(pid_t process) {
  clockid_t clock{};
  timespec used{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &used) != 0) {
    throw std::runtime_error("the system does not tell the processor time of the host");
  }
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

// Two descriptors of each client: one here, one in the host, which inherits the limit.
void makeRoomForClients() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t wanted = kNumbers.back() + 100;
  if (limit.rlim_max < wanted) {
    throw std::runtime_error("growth-clients needs " + std::to_string(wanted) +
                             " open files; the limit here is " + std::to_string(limit.rlim_max));
  }
  limit.rlim_cur = std::max(limit.rlim_cur, wanted);
  setrlimit(RLIMIT_NOFILE, &limit);
}

void waitUntilAlone(const Line& control) {
  const std::string request = controlOf(R"({"verb":"status"})");
  std::string reply;
  while (reply.find(R"("clients":1,)") == std::string::npos) {
    control.send(request);
    reply = control.takeFrame().bytes;
  }
}

// They come, subscribe, ask, and are there together; then they go.
void liveOf(std::size_t clients, const std::filesystem::path& socket) {
  std::vector<Line> lines;
  lines.reserve(clients);
  for (std::size_t i = 0; i < clients; ++i) {
    const Line& line = lines.emplace_back(socket);
    for (const char* const method : {"observeTimeEvents", "getTime"}) {
      line.send(callOf(method));
      static_cast<void>(line.takeFrame());
    }
  }
}

// Of the host's processor time.
double costOfClients(std::size_t count, const HostProgram& host, const Line& control) {
  const std::size_t times = count < kClientsOfARound ? kClientsOfARound / count : 1;
  const double before = processorSeconds(host.process());
  for (std::size_t i = 0; i < times; ++i) liveOf(count, host.socket());
  waitUntilAlone(control);
  return (processorSeconds(host.process()) - before) / static_cast<double>(times);
}

}  // namespace

void measureEventGrowth(Findings& findings) {
  const Folder folder;
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), inMemory(store));
  findings["growth-events"] = growthOf([&](std::size_t events) {
    return processorNanoseconds([&](benchmark::State& state) {
      for (auto _ : state) telephone.clock().advance(std::chrono::hours(events));
    });
  });
  findings["growth-observers"] = growthOf(
      [&](std::size_t count) {
        Observers observers(count);
        const Registration registration(telephone.service(), observers);
        return processorNanoseconds([&](benchmark::State& state) {
          for (auto _ : state) telephone.clock().advance(std::chrono::hours(1));
        });
      },
      kHundred);
}

void measureTimerGrowth(Findings& findings) {
  findings["growth-timers"] = growthOf(costOfTimers);
}

void measureClientGrowth(Findings& findings) {
  makeRoomForClients();
  const Folder folder;
  const HostProgram host(folder, folder / "state");
  const Line control(host.socket());
  findings["growth-clients"] =
      growthOf([&](std::size_t count) { return costOfClients(count, host, control); });
}

}  // namespace bench
