// What a telephone does that nobody touches: wake-ups and writes of a day, the cost of a year.
#include <fcntl.h>

#include <chrono>
#include <ctime>
#include <string>

#include "Folder.h"
#include "Measure.h"
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

class ClientStandIn {
 public:
  ClientStandIn() { host::ProgramMap::instance().set("/sbin/ntpclient", "/bin/true"); }
  ~ClientStandIn() { host::ProgramMap::instance().clear(); }
  ClientStandIn(const ClientStandIn&) = delete;
  ClientStandIn& operator=(const ClientStandIn&) = delete;
};

double processorMilliseconds() {
  constexpr double kPerSecond = 1000;
  return static_cast<double>(std::clock()) * kPerSecond / static_cast<double>(CLOCKS_PER_SEC);
}

double costOfAYear() {
  const Folder folder;
  host::MemoryDataAccess store;
  Telephone telephone(folder.path(), inMemory(store));
  telephone.set("sntp-tz-offset", "1");
  telephone.set("daylight-save-zone-id", "9");
  telephone.set("daylight-save", "true");
  telephone.set("auto-daylight-save", "true");
  const double begin = processorMilliseconds();
  telephone.clock().advance(hours(24 * 365));
  return processorMilliseconds() - begin;
}

}  // namespace

// The second day, so that what the start itself does is behind.
void measureQuietDay(Findings& findings) {
  const Folder disk(Folder::Place::disk);
  const ClientStandIn client;
  countTransactions();
  Telephone telephone(disk.path(), connected());
  telephone.set("sntp-addr", "127.0.0.1");
  telephone.clock().advance(hours(24) + std::chrono::minutes(30));
  const auto before = telephone.clock().expiriesDelivered();
  const StoreCount count;
  telephone.clock().advance(hours(24));
  const auto expiries = telephone.clock().expiriesDelivered() - before;
  findings["quiet-day-wakes"] = alone(static_cast<double>(expiries));
  findings["quiet-day-writes"] = alone(static_cast<double>(count.transactions()));
}

void measureYear(Findings& findings) {
  std::vector<double> found;
  for (std::size_t i = 0; i < Rounds::kUsual; ++i) found.push_back(costOfAYear());
  findings["year"] = alone(median(found));
}

}  // namespace bench
