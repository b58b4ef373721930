#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "verbs/TimeText.h"
#include "verbs/VerbPrinters.h"

namespace host {
namespace {

// A member that is an object; an empty one for any other.
Json part(const Json& status, const char* name) {
  const Json found = status.value(name, Json::object());
  return found.is_object() ? found : Json::object();
}

// Seconds as a duration; another value as it is.
std::string duration(const Json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end() || !found->is_number_integer()) return memberText(object, name);
  const auto count = found->get<std::int64_t>();
  return (count < 0 ? "-" : "") + durationText(std::chrono::seconds(std::abs(count)));
}

std::string shown(const Json& status) {
  const Json shown = part(status, "shown");
  return memberText(shown, "time") + ' ' + memberText(shown, "date");
}

std::string local(const Json& status) {
  return localTimeText(part(status, "shown"), "local",
                       memberText(part(status, "zone"), "abbreviation"));
}

std::string causeOf(const Json& change) {
  return " (" + memberText(change, "cause") + "; " + memberText(change, "who") + ')';
}

// With its own last change, if the telephone no longer follows it.
std::string systemTime(const Json& status) {
  const Json change = part(status, "systemChanged");
  std::string time = memberText(status, "system");
  const bool follows = memberText(status, "byHand") != "true";
  if (follows || change.empty() ||
      memberText(change, "to") == memberText(part(status, "changed"), "to")) {
    return time;
  }
  return time + ", set at " + memberText(change, "time") + causeOf(change);
}

std::string source(const Json& status) {
  const bool byHand = memberText(status, "byHand") == "true";
  return memberText(status, "source") +
         (byHand ? "; until a restart it follows the uptime, not the system time" : "");
}

std::string changed(const Json& status) {
  const Json change = part(status, "changed");
  if (change.empty()) return {};
  std::string text = memberText(change, "from") + " -> " + memberText(change, "to");
  if (change.contains("age")) text += ", " + duration(change, "age") + " ago";
  return text + causeOf(change);
}

// An instant and its age, or that there is none.
std::string aged(const Json& status, const char* name) {
  const Json object = part(status, name);
  std::string time = memberText(object, "time");
  if (time.empty()) return "none";
  if (!object.contains("age")) return time;
  const std::string age = duration(object, "age");
  return time + ", " + (age.starts_with('-') ? age.substr(1) + " ahead" : age + " ago");
}

std::string server(const Json& status) {
  const std::string server = memberText(part(status, "ntp"), "server");
  return server.empty() ? "none" : server;
}

std::string client(const Json& status) {
  const std::string process = memberText(part(status, "ntp"), "process");
  return process.empty() ? "not running" : "running, process " + process;
}

std::string zone(const Json& status) {
  const Json zone = part(status, "zone");
  if (!zone.contains("offset")) return {};
  const bool saving = memberText(zone, "daylight") == "true";
  return offsetText(zone, "offset") + (saving ? ", daylight saving" : "");
}

std::string nextZone(const Json& status) {
  const Json next = part(part(status, "zone"), "next");
  return next.empty() ? "none within two years"
                      : memberText(next, "time") + " to " + offsetText(next, "offset");
}

std::string timers(const Json& status) {
  std::string text;
  for (const Json& timer : status.value("timers", Json::array())) {
    text += (text.empty() ? "" : "\n             ") + padded(memberText(timer, "name"), 17) +
            memberText(timer, "time") + ", in " + duration(timer, "in");
  }
  return text;
}

std::string speed(const Json& status) {
  const Json clock = part(status, "clock");
  const auto found = clock.find("speed");
  if (found == clock.end()) return {};
  if (found->is_null()) return "max";
  return found->is_number() ? speedText(found->get<double>()) : memberText(clock, "speed");
}

struct Row {
  const char* title;
  std::string (*text)(const Json& status);  // empty: no row
  const char* member = nullptr;             // instead of `text`
};

// clang-format off
constexpr Row kRows[] = {
    {"shows", shown},
    {"utc", [](const Json& status) { return memberText(part(status, "shown"), "utc"); }},
    {"local", local},
    {"system time", systemTime},
    {"source", source},
    {"changed", changed},
    {"last report", [](const Json& status) { return aged(status, "report"); }},
    {"saved time", [](const Json& status) { return aged(status, "saved"); }},
    {"network", nullptr, "network"},
    {"time server", server},
    {"ntp client", client},
    {"client log", [](const Json& status) { return memberText(part(status, "ntp"), "said"); }},
    {"zone", zone},
    {"tz", [](const Json& status) { return memberText(part(status, "zone"), "tz"); }},
    {"next change", nextZone},
    {"timers", timers},
    {"speed", speed},
    {"uptime", [](const Json& status) { return duration(part(status, "clock"), "uptime"); }},
    {"variant", nullptr, "variant"},
    {"software", nullptr, "softwareType"},
    {"mac", nullptr, "mac"},
    {"log level", nullptr, "logLevel"},
    {"clients", nullptr, "clients"},
    {"plug-in", nullptr, "plugin"},
    {"socket", nullptr, "socket"},
    {"state", nullptr, "state"},
    {"device root", nullptr, "deviceRoot"},
    {"version", nullptr, "version"},
};
// clang-format on

}  // namespace

void printStatus(const Json& answer, std::ostream& out) {
  for (const Row& row : kRows) {
    const std::string text =
        row.member != nullptr ? memberText(answer, row.member) : row.text(answer);
    if (!text.empty()) out << padded(row.title, 13) << text << '\n';
  }
}

}  // namespace host
