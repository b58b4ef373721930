#include "scenario/ScenarioRecorder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

#include "scenario/RecordedEntry.h"
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

}  // namespace

std::vector<std::string> startingKeys() {
  std::vector<std::string> keys;
  for (const ManagementKey& key : managementKeys()) {
    if (isSetting(key)) keys.emplace_back(key.name);
  }
  keys.emplace_back("time");  // last: it is that of the begin
  return keys;
}

ScenarioRecorder::ScenarioRecorder(const RecordedStart& start, Write write)
    : m_self(start.device.at("origin")),
      m_write(std::move(write)),
      m_replay(start.uptime - start.wall % kSecond),
      m_offset(start.wall - start.uptime),
      m_approximate(!start.device.value("followsClock", true) &&
                    (start.running || m_replay % kSecond != 0)) {
  begin(start);
}

// The saved time comes two seconds before the begin. The zone is applied between them, which arms
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
  const std::string before = instantText(std::max(now - seconds(2), seconds(0)));
  setup("at", before);
  // A time set by hand changes with the whole seconds of the uptime, so they must be at the same
  // place between those of the wall clock.
  if (const microseconds part(m_replay % kSecond); part.count() > 0) {
    m_write("clock advance " + exactDurationText(part));
    m_write(lineOf({"clock", "jump", before}));
  }
  m_write("clock advance 0.999s");  // the zone is applied 1 ms after its sets, at a full second
  for (const auto& [key, reply] : start.replies) beginWith(key, reply);
  m_write("clock advance 1.001s");
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
  m_ended = m_ended || std::isinf(speedOf(entry));
  if (m_ended) return;
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
  if (!pending()) writeEvents();
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
  if (const auto step = recordedCall(call, reply, reply.is_null() || isCertain(call, reply))) {
    writeStep(call, *step, effectOf(call, reply));
  }
  if (!reply.is_null()) watchHand(call, reply);
}

void ScenarioRecorder::endRequest(Request request, const Json& entry) {
  m_changing = true;
  const Json& json = request.entry["json"];
  const Json reply = entry.value("json", Json{{"ok", true}});
  const auto step = recordedRequest(json, reply, isCertain(request.entry, entry));
  if (!step) return;
  if (reply.value("ok", false) && isMove(json)) return endMove(request, entry, *step);
  writeStep(request.entry, *step, effectOf(request.entry, isManagement(json) ? entry : Json()));
  watchHand(request.entry, entry);
}

// A move of a clock that runs, or with other steps on its way, is time that passed. So is a move to
// the next timer: the replay has others, such as restarts of the NTP client after random delays.
void ScenarioRecorder::endMove(const Request& request, const Json& entry,
                               const RecordedStep& step) {
  const Json& action = request.entry["json"]["action"];
  const bool running = speedOf(request.entry) > 0 && action != "to";
  if (request.alone && !running && action != "next") {
    writeStep(request.entry, step, effectOf(request.entry, nullptr));
    m_replay = numberOf(entry, "uptime");
    if (!pending()) writeEvents();
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

// If a second passes while the time is set by hand, the replay may be a second ahead.
void ScenarioRecorder::watchHand(const Json& request, const Json& reply) {
  const bool time = isOneOf(request, {"setTime", "time", "simple-time"});
  if (!time && !isOneOf(request, {"setDate", "simple-date"})) return;
  const std::int64_t begin = effectOf(request, nullptr);
  const bool passed = wholeSeconds(begin) != wholeSeconds(numberOf(reply, "uptime"));
  m_approximate = passed || (m_approximate && !time);
}

void ScenarioRecorder::writeStep(const Json& request, const RecordedStep& step,
                                 std::int64_t effect) {
  for (Request& each : m_requests) each.alone = false;
  writeEvents(effect);
  passTo(effect);
  m_late.clear();
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

// Those that came before that uptime.
void ScenarioRecorder::writeEvents(std::int64_t end) {
  const auto first = std::find_if(m_waiting.begin(), m_waiting.end(), [end](const Json& event) {
    return numberOf(event, "uptime") >= end;
  });
  std::vector<Json> rest(first, m_waiting.end());
  m_waiting.erase(first, m_waiting.end());
  for (const Json& event : std::exchange(m_waiting, std::move(rest))) {
    passTo(numberOf(event, "uptime"));
    const double speed = speedOf(event);
    const EventTime time = speed > 1 || m_approximate
                               ? EventTime::unknown
                               : (speed > 0 ? EventTime::late : EventTime::exact);
    writeEvent(recordedEvent(event, time).line, speed > 0);
  }
}

// A running clock raises the events of one set in another order than the paused one of the replay,
// so equal ones are expected once.
void ScenarioRecorder::writeEvent(const std::string& line, bool running) {
  ++m_events;
  if (!running) return m_write(line);
  if (std::find(m_late.begin(), m_late.end(), line) != m_late.end()) return;
  m_write(line);
  m_late.push_back(line);
}

void ScenarioRecorder::passTo(std::int64_t uptime) {
  if (uptime <= m_replay) return;
  if (wholeSeconds(uptime - m_replay) >= seconds(1)) m_late.clear();
  m_write("clock advance " + exactDurationText(microseconds(uptime - m_replay)));
  m_replay = uptime;
}

bool ScenarioRecorder::moves() const {
  return std::any_of(m_requests.begin(), m_requests.end(),
                     [](const Request& each) { return isMove(each.entry["json"]); });
}

// Otherwise the displayed time may have changed between request and reply. It changes with the
// seconds of the wall clock, or, once it was set by hand, with those of the uptime.
bool ScenarioRecorder::isCertain(const Json& request, const Json& reply) const {
  const std::int64_t begin = effectOf(request, nullptr);
  const std::int64_t end = numberOf(reply, "uptime");
  return !m_approximate && wholeSeconds(begin) == wholeSeconds(end) &&
         wholeSeconds(begin + m_offset) == wholeSeconds(end + m_offset);
}

void ScenarioRecorder::finish() {
  if (m_call) endCall(nullptr);
  m_requests.clear();
  writeEvents();
}

}  // namespace host
