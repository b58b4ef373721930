#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "MessageCodec.h"
#include "Method.h"
#include "base/Error.h"
#include "clock/VirtualClock.h"
#include "operator/ClockMoves.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "remote/ControlChannel.h"
#include "remote/EventStamp.h"
#include "remote/FrameTap.h"
#include "runtime/Device.h"
#include "services/LocalManagement.h"
#include "verbs/MethodJson.h"
#include "verbs/ReadJson.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using Nanoseconds = VirtualClock::Nanoseconds;
using SteadyClock = std::chrono::steady_clock;

// The longest payload, in bytes, whose content is shown. As JSON text it may be six times as long;
// a longer one would fill the room for the monitor's answers.
constexpr std::size_t kLongestPayload = 32 * 1024;

constexpr std::array kKinds = {"hello",          "call",         "reply",       "event",
                               "controlRequest", "controlReply", "controlItem", "timedEvent"};

std::int64_t microsecondsOf(Nanoseconds time) {
  return duration_cast<microseconds>(time).count();
}

bool isReply(FrameKind kind) {
  return kind == FrameKind::reply || kind == FrameKind::controlReply;
}

void addMethod(Json& entry, const TappedFrame& tapped, std::string_view payload) {
  std::stringstream stream{std::string(payload)};
  Method method;
  if (!tapped.codec.decode(stream, method)) {
    entry["undecodable"] = true;
    return;
  }
  entry["method"] = method.getName();
  // More than any call has. An object of them would take quadratic time.
  if (method.getParameters().size() > kMostInRequest) {
    entry["clipped"] = true;
  } else {
    entry["parameters"] = parametersJson(method);
  }
}

void addTimedEvent(Json& entry, const TappedFrame& tapped) {
  const std::string_view payload = tapped.frame.payload;
  const auto time = decodeEventStamp(payload);
  if (!time) {
    entry["undecodable"] = true;
    return;
  }
  entry.update(eventTimeJson(time->utc, time->offset));
  addMethod(entry, tapped, payload.substr(kEventStampSize));
}

// From a client, so the number of members must be bounded.
void addRequest(Json& entry, std::string_view payload) try {
  entry["json"] = readRequest(payload);
} catch (const Error&) {
  entry["undecodable"] = true;
}

// From the host.
void addAnswer(Json& entry, std::string_view payload) {
  Json json = readJson(payload);
  if (json.is_discarded()) {
    entry["undecodable"] = true;
  } else {
    entry["json"] = std::move(json);
  }
}

void addContent(Json& entry, const TappedFrame& tapped) {
  if (tapped.frame.payload.size() > kLongestPayload) {
    entry["clipped"] = true;
    return;
  }
  switch (tapped.frame.kind) {
    case FrameKind::hello:
      entry["codec"] = tapped.frame.payload;
      return;
    case FrameKind::call:
    case FrameKind::reply:
    case FrameKind::event:
      return addMethod(entry, tapped, tapped.frame.payload);
    case FrameKind::timedEvent:
      return addTimedEvent(entry, tapped);
    case FrameKind::controlRequest:
      return addRequest(entry, tapped.frame.payload);
    default:
      return addAnswer(entry, tapped.frame.payload);
  }
}

// Sends one client all frames, as items. Counts those that it cannot send, because the client has
// not read enough or there is no memory.
class FrameMonitor {
 public:
  FrameMonitor(const VirtualClock& clock, Channel channel)
      : m_clock(clock), m_channel(std::move(channel)) {}

  void begin(Device& device) const {
    Json entry = stamp();
    entry["begin"] = {{"origin", m_channel->origin()}};
    Json& begin = entry["begin"];
    begin["variant"] = device.options().variant;
    begin["softwareType"] = device.options().softwareType;
    begin["mac"] = device.options().mac;
    begin["network"] = device.management().value("interface-status").value_or("");
    begin["followsClock"] = followsClock(device);
    begin["settled"] = isSettled();
    static_cast<void>(m_channel->item(jsonText(entry)));
  }

  bool show(const TappedFrame& tapped) {
    if (tapped.fromClient) VirtualClock::forgetActs();  // what follows is done for this frame
    const std::uint64_t lost = m_lost++;
    if (!m_channel->hasRoom()) return true;
    Json entry = stamp();
    const auto act = VirtualClock::firstAct();
    if (act && isReply(tapped.frame.kind)) entry["acted"] = microsecondsOf(*act);
    if (lost > 0) entry["lost"] = lost;
    entry["peer"] = tapped.peer;
    entry["origin"] = tapped.origin;
    entry["direction"] = tapped.fromClient ? "received" : "sent";
    entry["kind"] = kKinds.at(static_cast<std::size_t>(tapped.frame.kind));
    entry["id"] = tapped.frame.id;
    entry["bytes"] = tapped.frame.payload.size();
    addContent(entry, tapped);
    if (!m_channel->item(jsonText(entry))) return false;
    m_lost = 0;
    return true;
  }

 private:
  [[nodiscard]] Json stamp() const {
    const auto since = SteadyClock::now() - m_start;
    const VirtualClock::Reading now = reading();
    return {{"microseconds", microsecondsOf(since)},
            {"wall", microsecondsOf(now.wall)},
            {"uptime", microsecondsOf(now.uptime)},
            {"acted", microsecondsOf(now.moment())},
            {"speed", speedText(m_clock.speed())}};
  }

  // Whether no timer is about to expire that waits only for the paused clock.
  [[nodiscard]] bool isSettled() const {
    return m_clock.speed() > 0 ||
           m_clock.nextExpiry().value_or(Nanoseconds::max()) > m_clock.uptime() + kSettling;
  }

  // Wall time and uptime of the same instant, unless the machine is very slow.
  [[nodiscard]] VirtualClock::Reading reading() const {
    constexpr int kTries = 10;
    constexpr std::chrono::microseconds kApart{50};
    for (int i = 0;; ++i) {
      const auto before = SteadyClock::now();
      const VirtualClock::Reading now = m_clock.reading();
      if (SteadyClock::now() - before < kApart || i == kTries) return now;
    }
  }

  const VirtualClock& m_clock;
  const Channel m_channel;
  const SteadyClock::time_point m_start = SteadyClock::now();
  std::uint64_t m_lost = 0;  // frames since the last one that was sent
};

}  // namespace

void actOnMonitor(Controller& controller, const Json&, const Channel& channel) {
  FrameTap* const tap = controller.facts().tap;
  if (tap == nullptr) throw Error("this telephone has no clients to monitor");
  const auto monitor = std::make_shared<FrameMonitor>(controller.device().clock(), channel);
  monitor->begin(controller.device());
  const auto number =
      tap->add([monitor](const TappedFrame& tapped) { return monitor->show(tapped); });
  channel->onGone([tap, number] { tap->remove(number); });
}

}  // namespace host
