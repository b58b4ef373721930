// What a telephone does that nobody touches: wake-ups and writes of a day, the cost of a year.
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "Child.h"
#include "Folder.h"
#include "FolderState.h"
#include "Measure.h"
#include "SpawnCount.h"
#include "StoreCount.h"
#include "Telephone.h"
#include "platform/ProgramMap.h"

namespace bench {
namespace {

using std::chrono::hours;

// A telephone with its network up, a time server and a client that can be started.
host::DeviceOptions connected() {
  host::DeviceOptions options;
  options.networkUp = true;
  options.mac = "0001E3A1B2C3";
  options.at = "2029-12-31T23:00:00+00:00";
  return options;
}

// What stands for the program of the NTP client.
class ClientStandIn {
 public:
  explicit ClientStandIn(const std::string& program) {
    host::ProgramMap::instance().set("/sbin/ntpclient", program);
  }
  ~ClientStandIn() { host::ProgramMap::instance().clear(); }
  ClientStandIn(const ClientStandIn&) = delete;
  ClientStandIn& operator=(const ClientStandIn&) = delete;
};

constexpr const char* kProgram = "/bin/true";

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) * 1e-3;
}

// Of processor time. who: RUSAGE_SELF, or RUSAGE_CHILDREN for those that have ended.
double millisecondsOf(int who) {
  rusage used{};
  getrusage(who, &used);
  return milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
}

double costOfTime(hours time, Telephone& telephone) {
  const double begin = millisecondsOf(RUSAGE_SELF);
  telephone.clock().advance(time);
  return millisecondsOf(RUSAGE_SELF) - begin;
}

void changeZonesOf(Telephone& telephone) {
  telephone.set("sntp-tz-offset", "1");
  telephone.set("daylight-save-zone-id", "9");
  telephone.set("daylight-save", "true");
  telephone.set("auto-daylight-save", "true");
}

constexpr hours kYear{24 * 365};
constexpr hours kWeek{24 * 7};

double costOfAYear() {
  const Folder folder;
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), inMemory(store));
  changeZonesOf(telephone);
  return costOfTime(kYear, telephone);
}

host::DeviceOptions connectedInMemory(host::MemoryDataAccess& store) {
  host::DeviceOptions options = connected();
  options.store = &store;
  options.securityLogInMemory = true;
  return options;
}

// It follows a full hour within minutes: that of the last is still to come when the year ends.
void requireOneAnHour(std::size_t starts) {
  const auto right = static_cast<std::size_t>(kYear.count()) - 1;
  if (starts == right) return;
  throw std::runtime_error("a year has started " + std::to_string(starts) + " clients instead of " +
                           std::to_string(right));
}

// All that is done for its clients up to the system's call that would start one: what a program
// takes to be started is not the service's.
double costOfANetworkYear() {
  const Folder folder;
  const ClientStandIn client(kProgram);
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), connectedInMemory(store));
  changeZonesOf(telephone);
  telephone.set("sntp-addr", "127.0.0.1");
  const SpawnCount clients;
  const double cost = costOfTime(kYear, telephone);
  requireOneAnHour(clients.starts());
  return cost;
}

// Of this process and of the clients.
template <class Work>
double costWithChildren(Work work) {
  const double begin = millisecondsOf(RUSAGE_SELF) + millisecondsOf(RUSAGE_CHILDREN);
  work();
  return millisecondsOf(RUSAGE_SELF) + millisecondsOf(RUSAGE_CHILDREN) - begin;
}

// It ends by itself, as in the floor: an hour of virtual time is too short for that, and the next
// start would end it. Then the host's thread takes note of it.
void waitUntilClientIsGone() {
  siginfo_t ended{};
  while (waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT) == 0) sched_yield();
}

double costOfAWeekOfClients() {
  const Folder folder;
  const ClientStandIn client(kProgram);
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), connectedInMemory(store));
  telephone.set("sntp-addr", "127.0.0.1");
  return costWithChildren([&] {
    for (int i = 0; i < kWeek.count(); ++i) {
      telephone.clock().advance(hours(1));
      waitUntilClientIsGone();
    }
  });
}

double costOfStartsAlone() {
  return costWithChildren([] {
    for (int i = 0; i < kWeek.count(); ++i) Child({kProgram}).waitForEnd();
  });
}

// What is written is written in transactions: they could not be counted otherwise.
void requireNoChange(const std::string& file) {
  if (!file.empty()) throw std::runtime_error("a quiet day has changed " + file);
}

}  // namespace

// The second day, so that what the start itself does is behind.
void measureQuietDay(Findings& findings) {
  const Folder disk(Folder::Place::disk);
  const ClientStandIn client(kProgram);
  countTransactions();
  Telephone telephone(disk.path(), connected());
  telephone.set("sntp-addr", "127.0.0.1");
  telephone.clock().advance(hours(24) + std::chrono::minutes(30));
  const auto before = telephone.clock().expiriesDelivered();
  const FolderState files(disk.path());
  const StoreCount count;
  telephone.clock().advance(hours(24));
  const auto expiries = telephone.clock().expiriesDelivered() - before;
  requireNoChange(FolderState(disk.path()).changeSince(files));
  findings["quiet-day-wakes"] = alone(static_cast<double>(expiries));
  findings["quiet-day-writes"] = alone(static_cast<double>(count.transactions()));
}

void measureYear(Findings& findings) {
  std::vector<double> found;
  while (found.size() < Rounds::kLeast) found.push_back(costOfAYear());
  findings["year"] = alone(median(found));
}

void measureNetworkYear(Findings& findings) {
  std::vector<double> found;
  while (found.size() < Rounds::kLeast) found.push_back(costOfANetworkYear());
  findings["year-network"] = alone(median(found));
}

void measureWeekOfClients(Findings& findings) {
  findings["week-clients"] =
      ratioOf(Rounds::alternate(costOfAWeekOfClients, costOfStartsAlone, Rounds::kLeast));
}

}  // namespace bench
