// One event to a hundred remote subscribers.
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Alternate.h"
#include "BlockingClient.h"
#include "HostProgram.h"
#include "Measure.h"
#include "SystemCalls.h"

namespace bench {
namespace {

constexpr std::size_t kSubscribers = 100;
constexpr std::size_t kEvents = 20;
constexpr std::size_t kCountedEvents =
    5;  // before the service saves the time, which needs more calls
constexpr std::chrono::milliseconds kAfterStart{
    100};  // the host watches its report pipe and checks its security log meanwhile

std::vector<BlockingClient> connectionsTo(const std::filesystem::path& socket, std::size_t count) {
  std::vector<BlockingClient> connections;
  for (std::size_t i = 0; i < count; ++i) connections.emplace_back(socket);
  return connections;
}

// A host with a paused clock, and its subscribers.
struct Observed {
  explicit Observed(std::size_t subscribers)
      : connections(connectionsTo(host.socket(), subscribers)) {
    for (const BlockingClient& connection : connections)
      connection.ask(callOf("observeTimeEvents"));
  }

  // Advances the clock by an hour, which causes one time event.
  void passHour() const { control.ask(hour); }

  const std::string hour = controlOf(R"({"verb":"clock","action":"advance","seconds":3600})");
  const HostProgram host{Words{"--speed", "0"}};
  const BlockingClient control{host.controlSocket()};
  const std::vector<BlockingClient> connections;
};

// Counts the system calls of the host for kCountedEvents events.
std::size_t systemCallsWith(std::size_t subscribers) {
  const Observed observed(subscribers);
  observed.passHour();
  std::this_thread::sleep_for(kAfterStart);
  const SystemCalls calls(observed.host.program().id());
  observed.passHour();  // the tracer's first stop wakes each thread once
  const std::size_t before = calls.all();
  for (std::size_t i = 0; i < kCountedEvents; ++i) observed.passHour();
  return calls.all() - before;
}

// Skips the date event, which midnight also sends.
std::string timeEventAt(const BlockingClient& connection) {
  std::string bytes;
  while (bytes.find("timeChangeEvent") == std::string::npos) bytes = connection.frame();
  return bytes;
}

// Sends the request, waits until all subscribers have the event that it causes, and returns the
// event.
std::string eventOf(const BlockingClient& cause, const std::string& request,
                    const std::vector<BlockingClient>& connections) {
  cause.send(request);
  std::string event;
  for (const BlockingClient& connection : connections) event = timeEventAt(connection);
  return event;
}

double waitOfAll(const BlockingClient& cause, const std::string& request,
                 const std::vector<BlockingClient>& connections) {
  const double wait =
      elapsed<Microseconds>([&] { static_cast<void>(eventOf(cause, request, connections)); });
  static_cast<void>(cause.frame());
  return wait;
}

}  // namespace

Sample measureSubscribers() {
  const Observed unobserved(0);
  const BlockingClient call(unobserved.host.socket());
  const Observed observed(kSubscribers);
  const BaselineProgram fan("fan", std::to_string(kSubscribers));
  const BlockingClient toFan(fan.socket());  // the first client is the sender
  const std::vector<BlockingClient> atFan = connectionsTo(fan.socket(), kSubscribers);
  const std::string event = eventOf(observed.control, observed.hour, observed.connections);
  static_cast<void>(observed.control.frame());
  return alternately(
      kEvents,
      [&] {
        const double withoutEvent = elapsed<Microseconds>([&] { unobserved.passHour(); });
        call.ask(callOf("getTime"));  // waits until the unobserved host is idle
        return waitOfAll(observed.control, observed.hour, observed.connections) - withoutEvent;
      },
      [&] { return waitOfAll(toFan, event, atFan); });
}

Sample measureEventSystemCalls() {
  const auto calls =
      static_cast<double>(systemCallsWith(kSubscribers)) - static_cast<double>(systemCallsWith(0));
  return {calls / static_cast<double>(kCountedEvents), {}};
}

}  // namespace bench
