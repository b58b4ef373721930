#include "verbs/VerbPrinters.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <span>
#include <string>

#include "base/LogLevels.h"
#include "base/PrintableText.h"
#include "verbs/JsonText.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

// Text that would break its line, or that a terminal would interpret, becomes a JSON string.
std::string oneLine(const std::string& text) {
  return isPlainLine(text) ? text : jsonLine(text);
}

std::string textOf(const Json& value) {
  return value.is_string() ? oneLine(value.get<std::string>()) : jsonLine(value);
}

// Compared as text: another program may answer with any type.
bool isTrue(const Json& object, const char* name) {
  return memberText(object, name) == "true";
}

// Cut to its column of a table; `get` prints the whole value.
std::string clipped(const std::string& text, std::size_t width) {
  return text.size() <= width ? text : std::string(beginningOf(text, width - 3)) + "...";
}

// "title    value", or nothing when there is no such member.
void printMember(const Json& object, const char* name, const char* title, std::ostream& out) {
  if (object.contains(name)) out << padded(title, 13) << memberText(object, name) << '\n';
}

struct Line {
  const char* member;
  const char* title;
};

constexpr Line kClockLines[] = {
    {"utc", "utc"},       {"local", "local"},   {"tz", "tz"},           {"speed", "speed"},
    {"uptime", "uptime"}, {"timers", "timers"}, {"next", "next timer"}, {"note", "note"},
};

constexpr Line kKeyLines[] = {
    {"key", "key"},     {"value", "value"}, {"settable", "settable"}, {"state", "state"},
    {"meaning", "get"}, {"values", "set"},  {"effect", "then"},       {"example", "example"},
};

void printMembers(const Json& object, std::span<const Line> lines, std::ostream& out) {
  for (const Line& line : lines) printMember(object, line.member, line.title, out);
}

// Compared as text: a host of another version may write any number.
std::string levelText(const Json& entry, const char* name = "level") {
  std::string number = memberText(entry, name);
  for (std::size_t level = 0; level < kLogLevelNames.size(); ++level) {
    if (number == std::to_string(level)) return kLogLevelNames[level];
  }
  return number;
}

void printLogEntry(const Json& entry, std::ostream& out) {
  out << memberText(entry, "time") << ' ' << padded(levelText(entry), 8) << ' '
      << memberText(entry, "component") << ' ' << memberText(entry, "text");
  if (!memberText(entry, "file").empty()) {
    out << " (" << memberText(entry, "file") << ':' << memberText(entry, "line") << ')';
  }
  out << '\n';
}

void printEventTime(const Json& event, std::ostream& out) {
  for (const char* const name : {"utc", "local"}) {
    const std::string time = memberText(event, name);
    if (!time.empty()) out << ' ' << name << '=' << time;
  }
}

}  // namespace

std::string memberText(const Json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end() || found->is_null()) return {};
  return textOf(*found);
}

std::string localTimeText(const Json& object, const char* name, const std::string& abbreviation) {
  constexpr std::size_t kDate = 10;  // "2026-03-08"
  constexpr std::size_t kTime = 19;  // "2026-03-08T03:00:00"
  std::string text = memberText(object, name);
  if (text.size() <= kTime || !parseInstant(text)) return text;
  const std::string offset = text.substr(kTime);
  text.resize(kTime);
  text[kDate] = ' ';
  return text + " (" + abbreviation + (abbreviation.empty() ? "" : ", ") + "UTC" + offset + ')';
}

std::string offsetText(const Json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end() || !found->is_number_integer()) return memberText(object, name);
  return offsetText(std::chrono::seconds(found->get<std::int64_t>()));
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

void printNothing(const Json&, std::ostream&) {}

void printRecorded(const Json& summary, std::ostream& out) {
  out << "recorded " << textOf(summary.at("steps")) << " steps and " << textOf(summary.at("events"))
      << " events\n";
}

void printCall(const Json& answer, std::ostream& out) {
  const auto reply = answer.find("reply");
  if (reply == answer.end()) return;
  for (const auto& [name, value] : reply->items()) {
    out << oneLine(name) << '=' << textOf(value) << '\n';
  }
}

void printEvent(const Json& event, std::ostream& out) {
  out << memberText(event, "event");
  const Json parameters = event.value("parameters", Json::object());
  for (const auto& [name, value] : parameters.items()) {
    out << ' ' << oneLine(name) << '=' << textOf(value);
  }
  printEventTime(event, out);
  out << std::endl;  // flushed, so that readers of a pipe see it at once
}

void printValue(const Json& answer, std::ostream& out) {
  out << memberText(answer, "value") << '\n';
}

void printKeys(const Json& answer, std::ostream& out) {
  if (answer.contains("key")) return printMembers(answer, kKeyLines, out);
  out << padded("KEY", 26) << padded("VALUE", 28) << padded("SETTABLE", 10) << "STATE\n";
  for (const Json& row : answer.value("keys", Json::array())) {
    out << padded(memberText(row, "key"), 26) << padded(clipped(memberText(row, "value"), 27), 28)
        << padded(isTrue(row, "settable") ? "yes" : "no", 10) << memberText(row, "state") << '\n';
  }
}

void printClock(const Json& answer, std::ostream& out) {
  printMembers(answer, kClockLines, out);
}

void printHistory(const Json& answer, std::ostream& out) {
  for (const Json& change : answer.value("changes", Json::array())) {
    const std::string from = memberText(change, "from");
    out << memberText(change, "time") << ' ' << memberText(change, "what") << ": "
        << (from.empty() ? "(none)" : from) << " -> " << memberText(change, "to") << " ("
        << memberText(change, "cause") << "; " << memberText(change, "who") << ")\n";
  }
}

void printUpcoming(const Json& answer, std::ostream& out) {
  for (const Json& row : answer.value("upcoming", Json::array())) {
    const std::string latest = memberText(row, "latest");
    const std::string before = memberText(row, "before");
    out << memberText(row, "time") << ' ' << padded(localTimeText(row, "local"), 31) << ' '
        << padded(memberText(row, "kind"), 12) << memberText(row, "what");
    if (!latest.empty()) out << ", at " << latest << " at the latest";
    if (!before.empty()) out << offsetText(row, "before") << " -> " << offsetText(row, "after");
    out << '\n';
  }
}

void printLog(const Json& answer, std::ostream& out) {
  if (!answer.contains("entries")) {
    if (answer.contains("text")) printLogEntry(answer, out);
    out.flush();
    return;
  }
  for (const Json& entry : answer["entries"]) printLogEntry(entry, out);
}

void printLogLevel(const Json& answer, std::ostream& out) {
  out << memberText(answer, "level") << " (" << levelText(answer) << ')';
  if (answer.contains("before")) {
    out << ", was " << memberText(answer, "before") << " (" << levelText(answer, "before") << ')';
  }
  out << '\n';
}

void printSecurityLog(const Json& answer, std::ostream& out) {
  for (const Json& record : answer.value("records", Json::array())) {
    const std::string lost = memberText(record, "lost");
    if (!lost.empty()) out << "- " << lost << " could not be written\n";
    const std::string origin = memberText(record, "origin");
    out << memberText(record, "number") << ' ' << memberText(record, "time") << ' '
        << (isTrue(record, "failure") ? "refused " : "accepted") << ' '
        << (origin.empty() ? "device" : origin) << ": " << memberText(record, "text");
    const std::string last = memberText(record, "last");
    if (!last.empty()) out << " (" << memberText(record, "count") << " times, last " << last << ')';
    out << '\n';
  }
  printMember(answer, "note", "note", out);
}

// The first entry has no frame.
void printFrame(const Json& entry, std::ostream& out) {
  if (!entry.contains("kind")) return;
  out << padded(memberText(entry, "microseconds"), 12) << ' '
      << padded(memberText(entry, "peer"), 10) << ' ' << padded(memberText(entry, "direction"), 8)
      << ' ' << padded(memberText(entry, "kind"), 14);
  for (const char* const name : {"method", "parameters", "json", "codec"}) {
    const std::string text = memberText(entry, name);
    if (!text.empty()) out << ' ' << text;
  }
  printEventTime(entry, out);
  if (isTrue(entry, "clipped")) out << ' ' << memberText(entry, "bytes") << " bytes";
  if (isTrue(entry, "undecodable")) out << " undecodable";
  if (entry.contains("lost")) out << " (" << memberText(entry, "lost") << " frames lost before)";
  out << std::endl;
}

}  // namespace host
