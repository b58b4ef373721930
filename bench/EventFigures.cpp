// One event to a hundred remote subscribers.
#include <string>
#include <vector>

#include "Alternate.h"
#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"

namespace bench {
namespace {

constexpr std::size_t kSubscribers = 100;
constexpr std::size_t kEvents = 20;

std::vector<Line> linesTo(const std::filesystem::path& socket) {
  std::vector<Line> lines;
  for (std::size_t i = 0; i < kSubscribers; ++i) lines.emplace_back(socket);
  return lines;
}

// Skips the date event, which midnight also sends.
std::string timeEventAt(const Line& line) {
  std::string bytes;
  while (bytes.find("timeChangeEvent") == std::string::npos) bytes = line.frame();
  return bytes;
}

// Microseconds until all subscribers have the event that the request causes.
template <class Take>
double waitOfAll(const Line& cause, const std::string& request, const std::vector<Line>& lines,
                 Take take) {
  const double wait = elapsed<Microseconds>([&] {
    cause.send(request);
    for (const Line& line : lines) static_cast<void>(take(line));
  });
  static_cast<void>(cause.frame());
  return wait;
}

}  // namespace

Found measureSubscribers() {
  const support::TemporaryFolder folder;
  const HostProgram host(folder, folder / "state", {"--speed", "0"});
  const BaselineProgram fan(folder, "fan", std::to_string(kSubscribers));
  const Line control(host.controlSocket());
  const Line toFan(fan.socket());  // its first client
  const std::vector<Line> atHost = linesTo(host.socket());
  const std::vector<Line> atFan = linesTo(fan.socket());
  for (const Line& line : atHost) line.ask(callOf("observeTimeEvents"));

  const std::string hour = controlOf(R"({"verb":"clock","action":"advance","seconds":3600})");
  std::string event;
  const auto hostsEvent = [&] {
    return waitOfAll(control, hour, atHost,
                     [&](const Line& line) { return event = timeEventAt(line); });
  };
  static_cast<void>(hostsEvent());
  return alternately(kEvents, hostsEvent, [&] {
    return waitOfAll(toFan, event, atFan, [](const Line& line) { return line.frame(); });
  });
}

}  // namespace bench
