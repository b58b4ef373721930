// One event to a hundred remote subscribers.
#include <string>
#include <vector>

#include "Alternate.h"
#include "BlockingClient.h"
#include "HostProgram.h"
#include "Measure.h"

namespace bench {
namespace {

constexpr std::size_t kSubscribers = 100;
constexpr std::size_t kEvents = 20;

std::vector<BlockingClient> linesTo(const std::filesystem::path& socket) {
  std::vector<BlockingClient> lines;
  for (std::size_t i = 0; i < kSubscribers; ++i) lines.emplace_back(socket);
  return lines;
}

// Skips the date event, which midnight also sends.
std::string timeEventAt(const BlockingClient& line) {
  std::string bytes;
  while (bytes.find("timeChangeEvent") == std::string::npos) bytes = line.frame();
  return bytes;
}

// Microseconds until all subscribers have the event that the request causes.
template <class Take>
double waitOfAll(const BlockingClient& cause, const std::string& request,
                 const std::vector<BlockingClient>& lines, Take take) {
  const double wait = elapsed<Microseconds>([&] {
    cause.send(request);
    for (const BlockingClient& line : lines) static_cast<void>(take(line));
  });
  static_cast<void>(cause.frame());
  return wait;
}

}  // namespace

Found measureSubscribers() {
  const HostProgram host({"--speed", "0"});
  const BaselineProgram fan("fan", std::to_string(kSubscribers));
  const BlockingClient control(host.controlSocket());
  const BlockingClient toFan(fan.socket());  // its first client
  const std::vector<BlockingClient> atHost = linesTo(host.socket());
  const std::vector<BlockingClient> atFan = linesTo(fan.socket());
  for (const BlockingClient& line : atHost) line.ask(callOf("observeTimeEvents"));

  const std::string hour = controlOf(R"({"verb":"clock","action":"advance","seconds":3600})");
  std::string event;
  const auto hostsEvent = [&] {
    return waitOfAll(control, hour, atHost,
                     [&](const BlockingClient& line) { return event = timeEventAt(line); });
  };
  static_cast<void>(hostsEvent());
  return alternately(kEvents, hostsEvent, [&] {
    return waitOfAll(toFan, event, atFan, [](const BlockingClient& line) { return line.frame(); });
  });
}

}  // namespace bench
