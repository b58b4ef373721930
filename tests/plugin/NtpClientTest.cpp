// The external NTP client: when it is started, how it is called, how it is replaced.

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include "DevicePaths.h"
#include "framework/ProgramMap.h"
#include "plugin/ClientPipe.h"
#include "support/LogCapture.h"
#include "support/Telephone.h"

namespace {

constexpr const char* kLongestAddress = "2001:db8:1111:2222:3333:4444:5555:6666";

}  // namespace

// The linker replaces NetHelper::dnsLookup with this, so that no test needs a name server.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" bool __real__ZN9NetHelper9dnsLookupEPKcPcii(const char* name, char* buffer, int size,
                                                       int family);
extern "C" bool __wrap__ZN9NetHelper9dnsLookupEPKcPcii(const char* name, char* buffer, int size,
                                                       int family);

extern "C" bool __wrap__ZN9NetHelper9dnsLookupEPKcPcii(const char* name, char* buffer, int size,
                                                       int family) {
  EXPECT_EQ(size, 46);  // the longest IPv6 text and its terminator
  const std::string asked = name;
  if (asked == "no-such-host.example") return false;
  if (asked == "port.example") return std::strcpy(buffer, "127.0.0.1:123") != nullptr;
  return __real__ZN9NetHelper9dnsLookupEPKcPcii(asked == "time.example" ? kLongestAddress : name,
                                                buffer, size, family);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// Access to a private member of the service: an explicit instantiation may name it.
std::atomic<bool> ClockService::*clientRequested();
template <std::atomic<bool> ClockService::*Member>
struct Opened {
  friend std::atomic<bool> ClockService::*clientRequested() { return Member; }
};
template struct Opened<&ClockService::m_ntpClientRequested>;

using std::chrono::hours;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

// A telephone with the network up and a server configured; its clock is not started yet.
class ClockWithNetworkUp : public testing::Test {
 protected:
  ClockWithNetworkUp() {
    telephone.management.setValue("interface-status", "up");
    telephone.store("SNTPaddress", "127.0.0.1");
  }
  // Starts the clock; returns the process id of its client.
  std::string start() {
    telephone.switchOn();
    return clients.nextStart();
  }
  static bool isRunning(const std::string& client) { return kill(std::stoi(client), 0) == 0; }

  support::Telephone telephone;
  plugin::ClientPipe clients;
  support::LogCapture log{5};
};

TEST_F(ClockWithNetworkUp, StartsTheClientWithItsCommandLineAndEnvironment) {
  setenv("CLOCK_TEST_MARK", "as the service has it", 1);  // NOLINT(concurrency-mt-unsafe)
  telephone.switchOn();
  auto message = clients.next();
  ASSERT_FALSE(message.empty());
  message.erase(message.begin());
  EXPECT_THAT(message,
              ElementsAre(DevicePaths::kNtpClientProgram, "-s", "-c", "525600", "-i", "3600", "-n",
                          "15", "-h", "127.0.0.1", "-4", "MARK=as the service has it"));
}

TEST_F(ClockWithNetworkUp, GivesTheClientNoFamilyForAnAddressWithAPort) {
  telephone.store("SNTPaddress", "port.example");
  telephone.switchOn();
  EXPECT_NE(clients.nextStart(), "");
  EXPECT_TRUE(log.hasPart(" -h 127.0.0.1:123 NULL NULL NULL\"\n"));
}

TEST_F(ClockWithNetworkUp, ClearsTheRequestWhenItStartsTheClient) {
  telephone.management.setValue("interface-status", "down");
  telephone.switchOn();
  std::atomic<bool>& requested = telephone.service().*clientRequested();
  EXPECT_FALSE(requested);
  requested = true;
  telephone.service().startNTPClient();
  EXPECT_TRUE(requested);
  telephone.management.setValue("interface-status", "up");
  EXPECT_NE(clients.nextStart(), "");
  EXPECT_FALSE(requested);
}

TEST_F(ClockWithNetworkUp, LetsTheClientTraceAtLevelSixOnly) {
  for (const auto& [level, options] : {std::pair{5, "-4 NULL NULL"}, {6, "-4 -L NULL"}}) {
    const support::LogCapture traced(level);
    telephone.switchOn();
    const auto message = clients.next();
    ASSERT_GE(message.size(), 1U + 12U);
    EXPECT_EQ(message[12] == "-L", level == 6);
    EXPECT_TRUE(traced.hasPart(std::string(" 127.0.0.1 ") + options + "\"\n")) << level;
    telephone.switchOff();
    EXPECT_NE(clients.nextEnd(), "");
  }
}

TEST_F(ClockWithNetworkUp, GivesTheClientTheAddressOfANamedServer) {
  telephone.store("SNTPaddress", "time.example");
  telephone.switchOn();
  const auto message = clients.next();
  ASSERT_EQ(message.size(), 1U + 11U + 1U);
  EXPECT_EQ(message[10], kLongestAddress);
  EXPECT_EQ(message[11], "-6");
}

TEST_F(ClockWithNetworkUp, WritesTheCommandLineToTheSystemLog) {
  start();
  std::vector<std::string> systemLines;
  for (const auto& entry : log.entries())
    if (entry.systemLog) systemLines.push_back(entry.text);
  EXPECT_THAT(systemLines,
              ElementsAre(std::string("startNTPClient() => \" ") + DevicePaths::kNtpClientProgram +
                          " -s -c 525600 -i 3600 -n 15 -h 127.0.0.1 -4 NULL NULL\"\n"));
}

TEST_F(ClockWithNetworkUp, EndsTheOldClientBeforeItStartsTheNextOne) {
  const std::string first = start();
  telephone.physical.jack(5, 1);
  EXPECT_EQ(clients.nextEnd(), first);
  const std::string second = clients.nextStart();
  EXPECT_NE(second, "");
  EXPECT_FALSE(isRunning(first));
  EXPECT_TRUE(isRunning(second));
  EXPECT_EQ(getpgid(std::stoi(second)), std::stoi(second));  // its own process group
}

TEST_F(ClockWithNetworkUp, EndsTheClientWithTheService) {
  const std::string client = start();
  telephone.switchOff();
  EXPECT_EQ(clients.nextEnd(), client);
  EXPECT_FALSE(isRunning(client));
}

// The listener may block in its pipe for long; the client must not keep running meanwhile.
TEST_F(ClockWithNetworkUp, EndsTheClientBeforeItWaitsForTheListener) {
  auto service = std::make_unique<ClockService>();
  service->initWith(&telephone.context);
  const std::string client = clients.nextStart();
  telephone.management.dropAgents();
  telephone.physical.dropSubscribers();
  std::thread ending([&] { service.reset(); });
  EXPECT_EQ(clients.nextEnd(), client);
  telephone.pipe.release();
  ending.join();
}

TEST_F(ClockWithNetworkUp, ReplacesAClientThatHasDied) {
  const std::string first = start();
  kill(std::stoi(first), SIGKILL);
  telephone.physical.jack(5, 1);
  EXPECT_NE(clients.nextStart(), "");
  EXPECT_FALSE(isRunning(first));  // and reaped
}

TEST_F(ClockWithNetworkUp, StartsNoClientWithoutAServer) {
  for (const char* const server : {"", "0.0.0.0", "::"}) {
    telephone.store("SNTPaddress", server);
    log.clear();
    telephone.switchOn();
    EXPECT_TRUE(log.has(5, "start NTP client"));
    EXPECT_TRUE(log.hasPart("No NTP server configure")) << server;
    EXPECT_FALSE(log.hasPart("startNTPClient() =>")) << server;
    telephone.switchOff();
  }
}

TEST_F(ClockWithNetworkUp, StopsSilentlyWhenTheNameIsUnknown) {
  telephone.store("SNTPaddress", "no-such-host.example");
  telephone.switchOn();
  EXPECT_TRUE(log.has(5, "start NTP client"));
  EXPECT_FALSE(log.hasPart("startNTPClient() =>"));
  EXPECT_FALSE(log.hasPart("couldn't be started"));
}

TEST_F(ClockWithNetworkUp, LogsThatTheProgramCannotBeStarted) {
  host::ProgramMap::instance().set(DevicePaths::kNtpClientProgram, "no/such/program");
  telephone.switchOn();
  EXPECT_TRUE(log.has(2, "ntpclient couldn't be started"));
  telephone.physical.jack(5, 1);  // and tries again
  EXPECT_EQ(log.count("ntpclient couldn't be started"), 2U);
}

TEST_F(ClockWithNetworkUp, StartsTheClientOnlyWhenTheNetworkPlugGoesIn) {
  start();
  for (const auto& [plug, status] :
       {std::pair{5, 0}, {5, 2}, {4, 1}, {6, 1}, {0, 0}, {2, 1}, {-5, 1}}) {
    log.clear();
    telephone.physical.jack(plug, status);
    EXPECT_TRUE(log.has(
        5, "jackEvent plugID " + std::to_string(plug) + " , plugStatus " + std::to_string(status)));
    EXPECT_FALSE(log.has("start NTP client")) << plug << " " << status;
  }
  telephone.physical.jack(5, 1);
  EXPECT_TRUE(log.has(5, "jackEvent plugID 5 , plugStatus 1"));
  EXPECT_TRUE(log.has(5, "start NTP client"));
}

TEST_F(ClockWithNetworkUp, LeavesTheRunningClientAloneWhenTheNetworkGoesDown) {
  const std::string client = start();
  for (const char* const status : {"down", "", "UP", "up ", "upper", " up", "backup", "true"}) {
    telephone.management.setValue("interface-status", status);
    EXPECT_TRUE(log.has(5, "manageableDataChanged=\"interface-status\""));
    EXPECT_TRUE(isRunning(client)) << status;
    log.clear();
    telephone.physical.jack(5, 1);
    EXPECT_TRUE(log.hasPart("Network not up")) << status;
  }
  telephone.management.setValue("interface-status", "up");
  EXPECT_EQ(clients.nextEnd(), client);
  const std::string next = clients.nextStart();
  telephone.management.setValue("interface-status", "up");  // still up
  EXPECT_EQ(clients.nextEnd(), next);
  EXPECT_NE(clients.nextStart(), "");
}

TEST_F(ClockWithNetworkUp, LeavesTheRunningClientAloneWhenNoOtherCanBeStarted) {
  const std::string client = start();
  for (const char* const server : {"no-such-host.example", "0.0.0.0", "::"}) {
    EXPECT_TRUE(telephone.manage("sntp-addr", server));
    EXPECT_TRUE(isRunning(client)) << server;
  }
}

TEST_F(ClockWithNetworkUp, StartsTheClientAndRefreshesTheZoneWhenDhcpChanges) {
  const std::string first = start();
  telephone.events.take();
  telephone.management.setValue("dhcp-enabled", "false");
  EXPECT_EQ(clients.nextEnd(), first);
  EXPECT_NE(clients.nextStart(), "");
  EXPECT_THAT(telephone.events.take(), IsEmpty());
  telephone.pass(std::chrono::milliseconds{1});
  EXPECT_THAT(telephone.events.take(),
              ElementsAre("zone LOC00:00", "time 00:00:00", "date 16.06.2016"));
}

TEST_F(ClockWithNetworkUp, StartsTheClientWhenTheServerIsSet) {
  const std::string first = start();
  EXPECT_TRUE(telephone.manage("sntp-addr", "127.0.0.2"));
  EXPECT_EQ(clients.nextEnd(), first);
  const auto message = clients.next();
  ASSERT_GT(message.size(), 10U);
  EXPECT_EQ(message[10], "127.0.0.2");
  EXPECT_FALSE(telephone.manage("sntp-addr", "127.0.0.2"));  // unchanged: refused
  EXPECT_EQ(log.count("start NTP client"), 2U);
}

TEST_F(ClockWithNetworkUp, StartsTheClientWhenTheSecretIsSet) {
  const std::string first = start();
  EXPECT_TRUE(telephone.manage("ntp-secret", "x"));
  EXPECT_EQ(clients.nextEnd(), first);
}

TEST_F(ClockWithNetworkUp, RestartsTheClientBetweenTenAndTwentyMinutesAfterTheHour) {
  telephone.store("FallbackDateTime", "2030-01-01T00:30:00+00:00");
  const std::string first = start();
  telephone.pass(seconds{1800 + 600});
  EXPECT_TRUE(isRunning(first));
  EXPECT_EQ(log.count("start NTP client"), 1U);
  telephone.pass(seconds{600});
  EXPECT_EQ(clients.nextEnd(), first);
  EXPECT_EQ(log.count("start NTP client"), 2U);
  telephone.pass(seconds{1800});  // one restart for each hour
  EXPECT_EQ(log.count("start NTP client"), 2U);
}

TEST_F(ClockWithNetworkUp, TriesEachHourWhileTheNetworkIsDown) {
  telephone.management.setValue("interface-status", "down");
  telephone.switchOn();
  telephone.pass(hours{10} + seconds{1200});
  EXPECT_EQ(log.count("Network not up"), 10U);
}

}  // namespace
