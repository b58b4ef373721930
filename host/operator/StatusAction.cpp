#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "DataStorage.h"
#include "clock/VirtualClock.h"
#include "framework/ApplicationLog.h"
#include "framework/DataAccess.h"
#include "interpose/DeviceRoot.h"
#include "operator/ChildProcesses.h"
#include "operator/ClockMoves.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "operator/LocalCall.h"
#include "operator/LogFollowers.h"
#include "runtime/ChangeRecorder.h"
#include "runtime/Device.h"
#include "services/LocalManagement.h"
#include "verbs/Landmarks.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::floor;
using std::chrono::seconds;

constexpr const char* kNtpClient = "ntpclient";

std::string stored(Device& device, const char* key) {
  return device.store().getItem(DASUtilsStrings::ClockSettingsSchema, key).value_or("");
}

// The reply of a method without parameters, as METHOD + "StringReturn".
std::string shownText(Device& device, const char* method) {
  Method call(method, Method::call);
  const std::string name = std::string(method) + "StringReturn";
  std::string text;
  const auto reply = askService(device, call);
  if (reply) static_cast<void>(reply->getStringParameter(name.c_str(), text, Parameter::out));
  return text;
}

Json shownJson(Device& device, seconds now) {
  return {{"time", shownText(device, "getTime")},           {"date", shownText(device, "getDate")},
          {"dateShort", shownText(device, "getDateShort")}, {"utc", instantText(now)},
          {"local", localInstantText(now, offsetAt(now))},  {"seconds", now.count()}};
}

Json changeJson(const Change& change) {
  return {{"time", instantText(change.time)},
          {"cause", change.cause},
          {"who", change.who},
          {"from", change.from},
          {"to", change.to}};
}

std::int64_t ageOf(Device& device, VirtualClock::Nanoseconds uptime) {
  return floor<seconds>(device.clock().uptime() - uptime).count();
}

// As an instant if it is one; a stored text may be anything.
std::string instantOrText(const std::string& text) {
  const auto instant = parseInstant(text);
  return instant ? instantText(*instant) : text;
}

void addOrigin(Device& device, Json& reply) {
  const ClockOrigin origin = device.changes().origin();
  reply["source"] = origin.source;
  reply["byHand"] = device.clock().setByHand();
  if (origin.change) {
    reply["changed"] = changeJson(*origin.change);
    reply["changed"]["age"] = ageOf(device, origin.changed);
  }
  if (origin.systemChange) reply["systemChanged"] = changeJson(*origin.systemChange);
  if (!origin.report) return;
  reply["report"] = {{"time", instantOrText(*origin.report)},
                     {"age", ageOf(device, origin.reported)}};
}

// The text of the component's newest entry in the log; empty if there is none.
std::string newestOf(const char* component) {
  const std::vector<LogEntry> kept = ApplicationLog::instance().kept();
  const auto found = std::find_if(kept.rbegin(), kept.rend(), [&](const LogEntry& entry) {
    return entry.component == component;
  });
  return found == kept.rend() ? "" : lineOf(*found);
}

// A saved time that is no instant has no age.
void addSavedTime(Device& device, Json& reply) {
  const std::string text = stored(device, "FallbackDateTime");
  if (text.empty()) return;
  Json saved = {{"time", instantOrText(text)}};
  if (const auto instant = parseInstant(text)) {
    saved["age"] = (floor<seconds>(device.clock().wall()) - *instant).count();
  }
  reply["saved"] = saved;
}

Json ntpJson(Device& device) {
  Json ntp = {{"server", stored(device, "SNTPaddress")}};
  const auto process = childRunning(kNtpClient);
  ntp["state"] = process ? "running" : "stopped";
  if (process) {
    ntp["process"] = *process;
    ntp["command"] = commandLineOf(*process);
  }
  if (const std::string said = newestOf(kNtpClient); !said.empty()) ntp["said"] = said;
  return ntp;
}

Json zoneJson(seconds now) {
  const char* const tz = std::getenv("TZ");
  const auto instant = static_cast<time_t>(now.count());
  tm local{};
  localtime_r(&instant, &local);
  Json zone = {{"tz", tz == nullptr ? "" : tz},
               {"offset", local.tm_gmtoff},
               {"abbreviation", local.tm_zone},
               {"daylight", local.tm_isdst > 0}};
  if (const auto change = rowNamed(landmarks(), "dst")->next(now.count())) {
    zone["next"] = {{"time", instantText(seconds(*change))},
                    {"offset", offsetAt(seconds(*change)).count()}};
  }
  return zone;
}

Json timersJson(Device& device) {
  Json timers = Json::array();
  const VirtualClock::Nanoseconds uptime = device.clock().uptime();
  for (const NamedTimer& timer : device.timers()) {
    const auto left = timer.expiry - uptime;
    timers.push_back({{"name", timer.name},
                      {"time", instantText(floor<seconds>(device.clock().shown() + left))},
                      {"in", std::chrono::ceil<seconds>(left).count()}});
  }
  return timers;
}

Json clockJson(const VirtualClock& clock) {
  const bool system = clock.source() == VirtualClock::Source::system;
  return {{"source", system ? "system" : "virtual"},
          {"speed", clock.speed()},  // null for `max`, which JSON cannot carry
          {"uptime", floor<seconds>(clock.uptime()).count()}};
}

// The client may be in another folder than the host.
std::string absolutePath(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(path, error);
  return path.empty() || error ? path.string() : whole.lexically_normal().string();
}

void addDevice(Controller& controller, Json& reply) {
  Device& device = controller.device();
  const HostFacts& facts = controller.facts();
  reply["network"] = device.management().value("interface-status").value_or("unknown");
  reply["variant"] = device.options().variant;
  reply["softwareType"] = device.management().value("related-software-type").value_or("");
  reply["mac"] = device.management().value("mac-addr").value_or("");
  reply["logLevel"] = ApplicationLog::instance().level();
  if (facts.clients) reply["clients"] = facts.clients();
  reply["plugin"] = facts.plugin;
  reply["socket"] = absolutePath(facts.socket);
  reply["state"] = absolutePath(device.options().state);
  reply["deviceRoot"] = deviceRoot();
  reply["version"] = facts.version;
}

}  // namespace

void actOnStatus(Controller& controller, const Json&, const Channel& channel) {
  Device& device = controller.device();
  const seconds now(serviceTime(device));
  Json reply = {{"ok", true}, {"shown", shownJson(device, now)}};
  reply["system"] = instantText(floor<seconds>(device.clock().wall()));
  addOrigin(device, reply);
  addSavedTime(device, reply);
  reply["ntp"] = ntpJson(device);
  reply["zone"] = zoneJson(now);
  reply["timers"] = timersJson(device);
  reply["clock"] = clockJson(device.clock());
  addDevice(controller, reply);
  answer(channel, reply);
}

}  // namespace host
