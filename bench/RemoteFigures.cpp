// Calls over the socket: one client's waiting, and what sixteen get done together.
#include <chrono>
#include <string>
#include <vector>

#include "ClientProcesses.h"
#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t kClients = 16;
constexpr std::size_t kRoundsOfOne = 51;   // many short ones: the last of 100 calls are few
constexpr std::size_t kCallsOfOne = 1000;  // of a round
constexpr std::size_t kCallsOfEach = 500;  // of a round, with sixteen clients
constexpr std::size_t kEchoSize = 100;     // bytes

// What goes there and how much comes back.
struct Exchange {
  std::string request;
  std::size_t reply;  // bytes

  void once(const Line& line) const {
    line.send(request);
    line.take(reply);
  }
};

const Exchange kEcho{std::string(kEchoSize, 'e'), kEchoSize};

Exchange getTimeAt(const Line& line) {
  Exchange exchange{callOf("getTime"), 0};
  line.send(exchange.request);
  exchange.reply = line.takeFrame().bytes.size();
  return exchange;
}

// Microseconds from sending to the whole reply, of each call.
std::vector<double> waits(const Line& line, const Exchange& exchange) {
  std::vector<double> found;
  found.reserve(kCallsOfOne);
  for (std::size_t i = 0; i < kCallsOfOne; ++i) {
    const auto begin = Clock::now();
    exchange.once(line);
    found.push_back(Microseconds(Clock::now() - begin).count());
  }
  return found;
}

// A process for each client: as a client does, it waits for its own reply alone.
double callsPerSecond(const std::vector<Line>& lines, const Exchange& exchange) {
  ClientProcesses clients;
  for (const Line& line : lines) {
    clients.add([&] {
      for (std::size_t i = 0; i < kCallsOfEach; ++i) exchange.once(line);
    });
  }
  const auto begin = Clock::now();
  clients.release();
  clients.join();
  const std::chrono::duration<double> taken = Clock::now() - begin;
  return static_cast<double>(lines.size() * kCallsOfEach) / taken.count();
}

std::vector<Line> linesTo(const std::filesystem::path& socket) {
  std::vector<Line> lines;
  lines.reserve(kClients);
  for (std::size_t i = 0; i < kClients; ++i) lines.emplace_back(socket);
  return lines;
}

}  // namespace

void measureOneClient(Findings& findings) {
  const Folder folder;
  const HostProgram host(folder, folder / "state");
  const FloorProgram echo(folder, "echo", {"1"});
  const Line toHost(host.socket());
  const Line toEcho(echo.socket());
  const Exchange getTime = getTimeAt(toHost);
  Rounds half;
  Rounds last;
  for (std::size_t i = 0; i < kRoundsOfOne; ++i) {
    const auto echoed = waits(toEcho, kEcho);
    const auto called = waits(toHost, getTime);
    half.add(quantile(called, 0.5), quantile(echoed, 0.5));
    last.add(quantile(called, 0.99), quantile(echoed, 0.99));
  }
  findings["remote-p50"] = ratioOf(half);
  findings["remote-p99"] = ratioOf(last);
}

void measureSixteenClients(Findings& findings) {
  const Folder folder;
  const HostProgram host(folder, folder / "state");
  const FloorProgram echo(folder, "echo", {std::to_string(kClients)});
  const std::vector<Line> toHost = linesTo(host.socket());
  const std::vector<Line> toEcho = linesTo(echo.socket());
  const Exchange getTime = getTimeAt(toHost.front());
  findings["remote-16"] = ratioOf(Rounds::alternate([&] { return callsPerSecond(toHost, getTime); },
                                                    [&] { return callsPerSecond(toEcho, kEcho); }));
}

}  // namespace bench
