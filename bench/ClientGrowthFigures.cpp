// How a host's cost grows with the number of its clients.
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "Growth.h"
#include "HostProgram.h"
#include "Measure.h"
#include "Subscribers.h"

namespace bench {
namespace {

constexpr std::size_t kClientsOfARound = 1000;  // at least, so that few are counted often
constexpr std::size_t kEventsOfARound = 1000;   // the same for events, when there are few to tell

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
  const rlimit raised{std::max(limit.rlim_cur, wanted), std::max(limit.rlim_max, wanted)};
  if (setrlimit(RLIMIT_NOFILE, &raised) == 0) return;
  throw std::runtime_error(std::to_string(wanted) + " open files are needed; the limit here is " +
                           std::to_string(limit.rlim_max));
}

bool isAlone(const Line& control) {
  control.send(controlOf(R"({"verb":"status"})"));
  return control.takeFrame().bytes.find(R"("clients":1,)") != std::string::npos;
}

void waitUntilAlone(const Line& control) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!isAlone(control)) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("clients do not go");
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

// An hour that the first client lets pass, of the host's processor time, until all have its event.
double costOfAnHour(const Subscribers& all, const HostProgram& host) {
  const std::size_t told = std::max<std::size_t>(all.lines().size(), 1);
  const std::size_t hours = told < kEventsOfARound ? kEventsOfARound / told : 1;
  const double before = processorSeconds(host.process());
  for (std::size_t i = 0; i < hours; ++i) {
    all.control().send(Subscribers::hourPasses());
    static_cast<void>(all.takeTimeEvent());
    static_cast<void>(all.control().takeFrame());
  }
  return (processorSeconds(host.process()) - before) / static_cast<double>(hours);
}

}  // namespace

void measureClientGrowth(Findings& findings) {
  makeRoomForClients();
  const Folder folder;
  const HostProgram host(folder, folder / "state");
  const Line control(host.controlSocket());
  findings["growth-clients"] =
      growthOf([&](std::size_t count) { return costOfClients(count, host, control); });
}

// Without what an hour costs that nobody is told of: another host tells that, in turns with the one
// that has subscribers.
void measureAudienceGrowth(Findings& findings) {
  makeRoomForClients();
  const Folder folder;
  const Folder quietFolder;
  const HostProgram host(folder, folder / "state", {"--speed", "0"});
  const HostProgram quiet(quietFolder, quietFolder / "state", {"--speed", "0"});
  Subscribers all(host);
  const Subscribers nobody(quiet);
  const auto costOfTelling = [&](std::size_t count) {
    all.connect(count);
    all.subscribe();
    const double alone = costOfAnHour(nobody, quiet);
    return costOfAnHour(all, host) - alone;
  };
  findings["growth-audience"] = growthOf(costOfTelling, Order::onlyMore);
}

}  // namespace bench
