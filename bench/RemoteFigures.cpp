// Calls over the socket: one client's waits, and the rate of sixteen clients.
#include <string>
#include <utility>
#include <vector>

#include "Alternate.h"
#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"
#include "Together.h"

namespace bench {
namespace {

constexpr std::size_t kClients = 16;
constexpr std::size_t kCallsOfOne = 1000;
constexpr std::size_t kCallsOfEach = 1000;  // of sixteen clients
constexpr std::size_t kEchoSize = 100;      // bytes

// A request and the size of its reply, in bytes.
struct Exchange {
  std::string request;
  std::size_t reply;

  void once(const Line& line) const {
    line.send(request);
    line.drop(reply);
  }
};

// A program, and clients connected to it.
struct Served {
  std::vector<Line> lines;
  Exchange exchange;

  Served(const std::filesystem::path& socket, std::size_t clients) {
    for (std::size_t i = 0; i < clients; ++i) lines.emplace_back(socket);
  }
};

class HostAndEcho {
 public:
  explicit HostAndEcho(std::size_t clients)
      : m_echo(m_folder, "echo", std::to_string(clients)),
        host(m_host.socket(), clients),
        echo(m_echo.socket(), clients) {
    const std::string getTime = callOf("getTime");
    host.exchange = {getTime, host.lines.front().ask(getTime).size()};
    echo.exchange = {std::string(kEchoSize, 'e'), kEchoSize};
  }

 private:
  const support::TemporaryFolder m_folder;
  const HostProgram m_host{m_folder, m_folder / "state"};
  const BaselineProgram m_echo;

 public:
  Served host;
  Served echo;
};

// Microseconds from sending to the whole reply: below which `part` of the calls lie.
double waitOfOne(const Served& served, double part) {
  std::vector<double> waits;
  for (std::size_t i = 0; i < kCallsOfOne; ++i) {
    waits.push_back(elapsed<Microseconds>([&] { served.exchange.once(served.lines.front()); }));
  }
  return quantile(std::move(waits), part);
}

Found measureWait(double part) {
  const HostAndEcho both(1);
  return alternately(
      1, [&] { return waitOfOne(both.host, part); }, [&] { return waitOfOne(both.echo, part); });
}

double callsPerSecond(const Served& served) {
  const double seconds = secondsTogether(served.lines.size(), [&](std::size_t client) {
    for (std::size_t i = 0; i < kCallsOfEach; ++i) served.exchange.once(served.lines[client]);
  });
  return static_cast<double>(served.lines.size() * kCallsOfEach) / seconds;
}

}  // namespace

Found measureRemoteMedian() {
  return measureWait(0.5);
}

Found measureRemoteTail() {
  return measureWait(0.99);
}

Found measureSixteenClients() {
  const HostAndEcho both(kClients);
  return alternately(
      1, [&] { return callsPerSecond(both.host); }, [&] { return callsPerSecond(both.echo); });
}

}  // namespace bench
