// Calls over the socket: one client's waits, and the rate of sixteen clients.
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "Alternate.h"
#include "BlockingClient.h"
#include "HostProgram.h"
#include "Measure.h"
#include "RunConcurrently.h"
#include "SystemCalls.h"

namespace bench {
namespace {

constexpr std::size_t kClients = 16;
constexpr std::size_t kCallsOfOne = 1000;
constexpr std::size_t kCallsOfEach = 1000;  // of sixteen clients
constexpr std::size_t kEchoSize = 100;      // bytes
constexpr std::size_t kInFlight = 32;       // requests of one client

// A request and the size of its reply, in bytes.
struct CallBytes {
  std::string request;
  std::size_t reply;

  void once(const BlockingClient& connection) const {
    connection.send(request);
    connection.drop(reply);
  }
};

// Clients connected to a program, and the requests and replies that they exchange.
struct Served {
  Served(const std::filesystem::path& socket, std::size_t clients) {
    for (std::size_t i = 0; i < clients; ++i) connections.emplace_back(socket);
  }

  std::vector<BlockingClient> connections;
  CallBytes exchange;
};

struct HostAndEcho {
  explicit HostAndEcho(std::size_t clients)
      : echoProgram("echo", std::to_string(clients)),
        host(hostProgram.socket(), clients),
        echo(echoProgram.socket(), clients) {
    const std::string getTime = callOf("getTime");
    host.exchange = {getTime, host.connections.front().ask(getTime).size()};
    echo.exchange = {std::string(kEchoSize, 'e'), kEchoSize};
  }

  const HostProgram hostProgram;
  const BaselineProgram echoProgram;
  Served host;
  Served echo;
};

// Microseconds from the request to the whole reply: the quantile `part` of many calls.
double waitOfOne(const Served& served, double part) {
  std::vector<double> waits;
  for (std::size_t i = 0; i < kCallsOfOne; ++i) {
    waits.push_back(
        elapsed<Microseconds>([&] { served.exchange.once(served.connections.front()); }));
  }
  return quantile(std::move(waits), part);
}

Sample measureWait(double part) {
  const HostAndEcho both(1);
  return alternately(
      1, [&] { return waitOfOne(both.host, part); }, [&] { return waitOfOne(both.echo, part); });
}

CallBytes times(const CallBytes& exchange, std::size_t count) {
  CallBytes many{{}, exchange.reply * count};
  for (std::size_t i = 0; i < count; ++i) many.request += exchange.request;
  return many;
}

// Calls per second of one client. each: the calls in one exchange.
double callsPerSecond(const BlockingClient& connection, const CallBytes& exchange,
                      std::size_t each) {
  const double seconds = elapsed<std::chrono::duration<double>>([&] {
    for (std::size_t i = 0; i < kCallsOfOne; ++i) exchange.once(connection);
  });
  return static_cast<double>(kCallsOfOne * each) / seconds;
}

double callsPerSecond(const Served& served) {
  const double seconds = runConcurrently(served.connections.size(), [&](std::size_t client) {
    for (std::size_t i = 0; i < kCallsOfEach; ++i) served.exchange.once(served.connections[client]);
  });
  return static_cast<double>(served.connections.size() * kCallsOfEach) / seconds;
}

}  // namespace

Sample measureRemoteMedian() {
  return measureWait(0.5);
}

Sample measureRemoteTail() {
  return measureWait(0.99);
}

Sample measureSixteenClients() {
  const HostAndEcho both(kClients);
  return alternately(
      1, [&] { return callsPerSecond(both.host); }, [&] { return callsPerSecond(both.echo); });
}

Sample measureSixteenClientsSystemCalls() {
  const HostAndEcho both(kClients);
  const SystemCalls calls(both.hostProgram.program().id());
  static_cast<void>(callsPerSecond(both.host));
  return {static_cast<double>(calls.all()) / static_cast<double>(kClients * kCallsOfEach), {}};
}

Sample measurePipeline() {
  const HostProgram host;
  const BlockingClient connection(host.socket());
  const std::string getTime = callOf("getTime");
  const CallBytes one{getTime, connection.ask(getTime).size()};
  const CallBytes many = times(one, kInFlight);
  return alternately(
      1, [&] { return callsPerSecond(connection, many, kInFlight); },
      [&] { return callsPerSecond(connection, one, 1); });
}

}  // namespace bench
