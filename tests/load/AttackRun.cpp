#include "load/AttackRun.h"

#include <csignal>
#include <sstream>
#include <stdexcept>

#include "integration/RestartableHost.h"
#include "load/Attackers.h"
#include "load/Latencies.h"
#include "remote/RemoteClient.h"
#include "support/Interruption.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kBystanderLimit(20);
constexpr std::chrono::seconds kEndLimit(2);

Latencies callFor(std::chrono::milliseconds duration, host::RemoteClient& bystander) {
  Latencies latencies;
  const auto end = Clock::now() + duration;
  while (Clock::now() < end && support::Interruption::signal() == 0) {
    Method call("getTime", Method::call);
    const auto begin = Clock::now();
    if (!bystander.call(call, kBystanderLimit))
      throw std::runtime_error("the bystander is not answered");
    latencies.add(Clock::now() - begin);
  }
  return latencies;
}

std::int64_t millisecondsToEnd(integration::RestartableHost& host) {
  const auto begin = Clock::now();
  host.program().signal(SIGTERM);
  if (!host.program().ends(kEndLimit)) return -1;
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

}  // namespace

AttackFigures attackAHost(std::chrono::milliseconds duration) {
  integration::RestartableHost host(CLOCKHOST, {"--log-level", "2"});
  host.launch();
  if (!host.answers()) throw std::runtime_error("no host: " + host.program().err());
  const auto bystander = host.connect();
  AttackFigures figures;
  Attackers attackers(host.socket());
  const Latencies latencies = callFor(duration, *bystander);
  figures.calls = latencies.count();
  figures.callP50 = latencies.quantile(0.5);
  figures.callP99 = latencies.quantile(0.99);
  figures.mostWaited = latencies.quantile(1 - 1e-9);
  figures.connections = attackers.connections();
  figures.ended = millisecondsToEnd(host);
  return figures;
}

std::string complaintAbout(const AttackFigures& figures, std::uint64_t mostP99) {
  if (figures.calls == 0) return "the bystander was not answered while the host was attacked";
  if (figures.connections == 0) return "nobody has attacked the host";
  if (figures.ended < 0) return "the attacked host did not end within 2 s of SIGTERM";
  if (figures.callP99 <= mostP99) return "";
  return "p99 of the bystander's calls is " + std::to_string(figures.callP99) +
         " us while the host is attacked; at most " + std::to_string(mostP99) + " are due";
}

std::string toText(const AttackFigures& figures) {
  std::ostringstream text;
  text << "attackers' connections: " << figures.connections << '\n'
       << "  calls of a bystander answered: " << figures.calls << '\n'
       << "  p50 of a call: " << figures.callP50 << " us\n"
       << "  p99 of a call: " << figures.callP99 << " us\n"
       << "  the longest: " << figures.mostWaited << " us\n"
       << "  from SIGTERM to the end: " << figures.ended << " ms\n";
  return text.str();
}

}  // namespace load
