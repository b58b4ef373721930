#include "scenario/ScenarioRecorder.h"

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

#include "verbs/KeyCatalogue.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

constexpr std::int64_t kSecond = 1'000'000;  // microseconds

// How far two readings of the wall clock and the uptime may differ, in real time. More is a jump.
constexpr std::int64_t kApart = 1000;  // microseconds

// Keys that set the clock, or the same as another key.
constexpr std::string_view kNotSettings[] = {"time", "simple-time", "simple-date",
                                             "daylight-save-zone-index"};

// A server other than any real one: a set of the current one would be refused.
constexpr const char* kNoServers[] = {"192.0.2.254", "192.0.2.253"};

bool isSetting(const ManagementKey& key) {
  return key.settable && std::find(std::begin(kNotSettings), std::end(kNotSettings), key.name) ==
                             std::end(kNotSettings);
}

seconds wholeSeconds(std::int64_t time) {
  return std::chrono::floor<seconds>(microseconds(time));
}

bool isMove(const Json& request) {
  const std::string action = request.value("action", "");
  return request.value("verb", "") == "clock" &&
         (action == "advance" || action == "next" || action == "to");
}

std::int64_t numberOf(const Json& entry, const char* name) {
  return entry.at(name).get<std::int64_t>();
}

std::int64_t offsetOf(const Json& entry) {
  return numberOf(entry, "wall") - numberOf(entry, "uptime");
}

double speedOf(const Json& entry) {
  const std::string text = entry.at("speed");
  return text == "paused" ? 0 : parseSpeed(text).value_or(1);
}

bool isSame(const Json& request, const Json& reply) {
  return request.at("peer") == reply.at("peer") && request.at("id") == reply.at("id");
}

}  // namespace

std::vector<std::string> startingKeys() {
  std::vector<std::string> keys = {"time"};
  for (const ManagementKey& key : managementKeys()) {
    if (isSetting(key)) keys.emplace_back(key.name);
  }
  return keys;
}

ScenarioRecorder::ScenarioRecorder(const RecordedStart& start, Write write)
    : m_self(start.device.at("origin")),
      m_write(std::move(write)),
      m_replay(start.uptime - start.wall % kSecond),
      m_offset(start.wall - start.uptime) {
  begin(start);
}

// The saved time comes a second before the begin. In that second the zone is applied, which arms
// the timers.
void ScenarioRecorder::begin(const RecordedStart& start) {
  const Json& device = start.device;
  const seconds now = wholeSeconds(start.wall);
  const auto setup = [&](const char* name, const std::string& value) {
    if (!value.empty()) m_write(lineOf({name, value}));
  };
  setup("variant", device.at("variant").dump());
  setup("software-type", device.at("softwareType"));
  setup("mac", device.at("mac"));
  if (device.at("network") == "up") setup("network", "up");
  setup("at", instantText(std::max(now - seconds(1), seconds(0))));
  for (const auto& [key, reply] : start.replies) beginWith(key, reply);
  m_write("clock advance 1s");
  m_write(lineOf({"clock", "jump", instantText(now)}));
  if (device.value("followsClock", true)) return;
  // Twice: the first set may change daylight saving, which moves the time by an hour.
  const std::string time = start.replies.at("time").value("value", std::string());
  for (int i = 0; i < 2; ++i) m_write(lineOf({"set", "time", time}));
  m_write("clock advance 0s");
  m_write(lineOf({"clock", "jump", instantText(now)}));
}

void ScenarioRecorder::beginWith(const std::string& key, const Json& reply) {
  const std::string value = reply.value("value", std::string());
  const bool server = key == "sntp-addr";
  if (key == "time" || !reply.value("ok", false) || (server && value.empty())) return;
  if (server) m_write(lineOf({"set", key, kNoServers[value == kNoServers[0] ? 1 : 0]}));
  m_write(lineOf({"set", key, value}));
}

void ScenarioRecorder::add(const Json& entry) {
  if (entry.contains("lost")) {
    const auto lost = entry["lost"].get<std::uint64_t>();
    m_lost += lost;
    m_write("# " + std::to_string(lost) + " frames are missing here");
  }
  if (!entry.contains("kind")) return;
  const bool received = entry.at("direction") == "received";
  const bool replyToCall = m_call && !received && isSame(*m_call, entry);
  if (!replyToCall && m_call && received) endCall(nullptr);
  watchWall(entry);
  if (entry.at("origin") == m_self) {
    if (entry.at("kind") == "event") m_waiting.push_back(entry);
  } else if (received) {
    addReceived(entry);
  } else {
    addSent(entry);
  }
  if (!moves()) writeEvents();
}

void ScenarioRecorder::addReceived(const Json& entry) {
  if (entry.at("kind") == "call") m_call = entry;
  if (entry.at("kind") == "controlRequest" && entry.contains("json") &&
      recordedRequest(entry["json"], {{"ok", true}}, false)) {
    m_requests.push_back({entry});
  }
}

void ScenarioRecorder::addSent(const Json& entry) {
  if (m_call && entry.at("kind") == "reply" && isSame(*m_call, entry)) return endCall(entry);
  if (entry.at("kind") != "controlReply") return;
  const auto found = std::find_if(m_requests.begin(), m_requests.end(),
                                  [&](const Request& each) { return isSame(each.entry, entry); });
  if (found == m_requests.end()) return;
  Request request = std::move(*found);
  m_requests.erase(found);
  endRequest(std::move(request), entry);
}

void ScenarioRecorder::endCall(const Json& reply) {
  const Json call = *std::exchange(m_call, std::nullopt);
  m_changing = true;
  if (const auto step = recordedCall(call, reply, reply.is_null() || sameSecond(call, reply))) {
    writeStep(call, *step);
  }
}

void ScenarioRecorder::endRequest(Request request, const Json& entry) {
  m_changing = true;
  const Json& json = request.entry["json"];
  const Json reply = entry.value("json", Json{{"ok", true}});
  const auto step = recordedRequest(json, reply, sameSecond(request.entry, entry));
  if (!step) return;
  if (reply.value("ok", false) && isMove(json)) return endMove(request, entry, *step);
  writeStep(request.entry, *step);
}

// A move of a clock that runs, or with other steps on its way, is time that passed.
void ScenarioRecorder::endMove(const Request& request, const Json& entry,
                               const RecordedStep& step) {
  const bool running = speedOf(request.entry) > 0 && request.entry["json"]["action"] != "to";
  if (request.alone && !running) {
    writeStep(request.entry, step);
    m_replay = numberOf(entry, "uptime");
    if (!moves()) writeEvents();
    // Other timers due at that instant expire with the next `clock advance`.
    m_due = request.entry["json"]["action"] == "next";
    return;
  }
  m_changing = false;  // a jump during the move is written as a jump
  passTo(numberOf(entry, "uptime"));
  watchWall(entry);
  ++m_steps;
}

// The replay has the wall clock that its own steps set; another program's change becomes a jump.
void ScenarioRecorder::watchWall(const Json& entry) {
  const double speed = std::max(1.0, speedOf(entry));
  const bool apart = static_cast<double>(std::abs(offsetOf(entry) - m_offset)) >
                     static_cast<double>(kApart) * speed;
  const bool own = m_changing || m_call || !m_requests.empty();
  if (apart && !own) {
    writeEvents();
    passTo(numberOf(entry, "uptime"));
    m_write("# another program set the clock");
    m_write(lineOf({"clock", "jump", instantText(wholeSeconds(numberOf(entry, "wall")))}));
  }
  if (apart) m_offset = offsetOf(entry);
  if (!m_call && m_requests.empty()) m_changing = false;
}

void ScenarioRecorder::writeStep(const Json& request, const RecordedStep& step) {
  for (Request& each : m_requests) each.alone = false;
  if (moves()) writeEvents();
  passTo(numberOf(request, "uptime"));
  const std::string peer = request.at("peer");
  const std::string who = peer == m_peer ? "" : "  # " + peer;
  m_peer = peer;
  if (step.note.empty()) {
    m_write(step.line + who);
  } else {
    m_write("# not replayed: " + step.line + "  # " + step.note);
  }
  ++m_steps;
}

void ScenarioRecorder::writeEvents() {
  for (const Json& event : std::exchange(m_waiting, {})) {
    passTo(numberOf(event, "uptime"));
    if (std::exchange(m_due, false)) m_write("clock advance 0.0s");
    const double speed = speedOf(event);
    const EventTime time =
        speed > 1 ? EventTime::unknown : (speed > 0 ? EventTime::late : EventTime::exact);
    m_write(recordedEvent(event, time).line);
    ++m_events;
  }
}

void ScenarioRecorder::passTo(std::int64_t uptime) {
  if (uptime <= m_replay) return;
  m_write("clock advance " + exactDurationText(microseconds(uptime - m_replay)));
  m_replay = uptime;
  m_due = false;
}

bool ScenarioRecorder::moves() const {
  return std::any_of(m_requests.begin(), m_requests.end(),
                     [](const Request& each) { return isMove(each.entry["json"]); });
}

// Otherwise the displayed time may have changed between request and reply.
bool ScenarioRecorder::sameSecond(const Json& request, const Json& reply) const {
  return wholeSeconds(numberOf(request, "uptime") + m_offset) ==
         wholeSeconds(numberOf(reply, "uptime") + m_offset);
}

void ScenarioRecorder::finish() {
  if (m_call) endCall(nullptr);
  m_requests.clear();
  writeEvents();
}

}  // namespace host
