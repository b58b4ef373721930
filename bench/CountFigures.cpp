// Counts the system calls, heap allocations and syncs of a host for each operation.
#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "BlockingClient.h"
#include "HostProgram.h"
#include "Measure.h"
#include "SystemCalls.h"
#include "support/SleepingThread.h"

namespace bench {
namespace {

constexpr std::size_t kCalls = 1000;
constexpr std::size_t kPipelined = 32;
constexpr std::size_t kSets = 20;
// Many, because the history of many sets is written at once.
constexpr std::size_t kSetsWithHistory = 200;
constexpr std::chrono::milliseconds kSettling{500};
constexpr std::chrono::milliseconds kBetweenSets{10};  // the threads sleep again before the next
constexpr std::chrono::seconds kIdle{2};

// Reads how many heap allocations a process has made, from the file in which the preloaded
// HeapCount.cpp counts them.
class HeapCount {
 public:
  HeapCount() { std::ofstream(m_file) << std::string(sizeof(std::size_t), '\0'); }

  [[nodiscard]] Words launcher() const {
    return {"/usr/bin/env", std::string("LD_PRELOAD=") + BENCH_HEAP,
            "BENCH_HEAP_COUNT=" + m_file.string()};
  }

  [[nodiscard]] std::size_t allocations() const {
    std::size_t count = 0;
    std::ifstream(m_file).read(reinterpret_cast<char*>(&count), sizeof count);
    if (count == 0) {
      throw std::runtime_error("the host's heap allocations are not counted: \"" BENCH_HEAP
                               "\" was not preloaded");
    }
    return count;
  }

 private:
  const support::TemporaryFolder m_folder;
  const std::filesystem::path m_file = m_folder / "heap";
};

// Waits until the host has answered a call and is idle, so that its start-up is not counted.
void settle(const HostProgram& host) {
  BlockingClient(host.socket()).ask(callOf("getTime"));
  std::this_thread::sleep_for(kSettling);
}

// The mean count of many operations, after one that is not counted.
template <class Operation, class Count>
Sample perOperation(std::size_t operations, Operation operation, Count count) {
  operation();
  const std::size_t before = count();
  for (std::size_t i = 0; i < operations; ++i) operation();
  return {static_cast<double>(count() - before) / static_cast<double>(operations), {}};
}

// The mean count for a batch of `inFlight` calls that are sent together while the host sleeps, by
// two clients alternately.
template <class Count>
Sample perCalls(const HostProgram& host, std::size_t inFlight, Count count) {
  const BlockingClient one(host.socket());
  const BlockingClient another(host.socket());
  bool turn = false;
  std::string requests;
  for (std::size_t i = 0; i < inFlight; ++i) requests += callOf("getTime");
  const auto callAll = [&] {
    const BlockingClient& connection = std::exchange(turn, !turn) ? one : another;
    connection.send(requests);
    for (std::size_t i = 0; i < inFlight; ++i) static_cast<void>(connection.frame());
    support::waitUntilSleeps(host.program().id());
  };
  return perOperation(kCalls, callAll, count);
}

Sample systemCallsPer(std::size_t inFlight) {
  const HostProgram host;
  settle(host);
  const SystemCalls calls(host.program().id());
  return perCalls(host, inFlight, [&] { return calls.all(); });
}

// Changes a setting to another value on each call.
class Setter {
 public:
  explicit Setter(const HostProgram& host) : m_connection(host.controlSocket()) {}

  void operator()() {
    m_connection.control(R"({"verb":"set","key":"date-format","value":")" +
                         std::to_string(++m_set % 3) + "\"}");
  }

 private:
  const BlockingClient m_connection;
  int m_set = 0;
};

template <class Operation>
double syncsOf(const SystemCalls& calls, Operation& operation) {
  const std::size_t before = calls.syncs();
  operation();
  return static_cast<double>(calls.syncs() - before);
}

}  // namespace

Sample measureCallSystemCalls() {
  return systemCallsPer(1);
}

Sample measurePipelineSystemCalls() {
  return systemCallsPer(kPipelined);
}

Sample measureCallAllocations() {
  const HeapCount heap;
  const HostProgram host({}, heap.launcher());
  settle(host);
  return perCalls(host, 1, [&] { return heap.allocations(); });
}

Sample measureSetSystemCalls() {
  const HostProgram host;
  settle(host);
  const SystemCalls calls(host.program().id());
  Setter set(host);
  const auto setAndSettle = [&] {
    set();
    std::this_thread::sleep_for(kBetweenSets);
  };
  return perOperation(kSets, setAndSettle, [&] { return calls.all(); });
}

Sample measureSetAllocations() {
  const HeapCount heap;
  const HostProgram host({}, heap.launcher());
  settle(host);
  return perOperation(kSetsWithHistory, Setter(host), [&] { return heap.allocations(); });
}

// The largest number of syncs of any set; 0 if some set was not synced.
Sample measureSetSyncs() {
  const HostProgram host;
  settle(host);
  Setter set(host);
  const SystemCalls calls(host.program().id());
  set();
  double most = 0;
  for (std::size_t i = 1; i <= kSets; ++i) {
    const double syncs = syncsOf(calls, set);
    if (syncs == 0) return {};
    most = std::max(most, syncs);
  }
  return {most, {}};
}

// Counts the second day: the first also has the work that the start leaves.
Sample measureDaySyncs() {
  const HostProgram host({"--speed", "0"});
  const BlockingClient connection(host.controlSocket());
  const SystemCalls calls(host.program().id());
  const auto day = [&] {
    connection.control(R"({"verb":"clock","action":"advance","seconds":86400})");
  };
  day();
  return {syncsOf(calls, day), {}};
}

// At the speed of real time, far from a full hour.
Sample measureIdle() {
  const HostProgram host({"--at", "2030-01-15T12:20:00+00:00"});
  settle(host);
  const SystemCalls calls(host.program().id());
  std::this_thread::sleep_for(kSettling);  // the tracer's first stop wakes each thread once
  const std::size_t before = calls.all();
  std::this_thread::sleep_for(kIdle);
  return {static_cast<double>(calls.all() - before), {}};
}

}  // namespace bench
