#include "apps/Recording.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <vector>

#include "apps/RecordedFile.h"
#include "apps/Replay.h"
#include "apps/TimeLimit.h"
#include "apps/Watching.h"
#include "base/Error.h"
#include "base/PrintableText.h"
#include "base/TerminationSignals.h"
#include "remote/PeerProcess.h"
#include "remote/RemoteClient.h"
#include "scenario/RecordedEntry.h"
#include "scenario/RecordedWords.h"
#include "scenario/ScenarioRecorder.h"
#include "verbs/ReadJson.h"

namespace host {
namespace {

using std::chrono::milliseconds;

constexpr int kTries = 20;  // to read all settings without a change meanwhile

Json objectIn(const std::string& text) {
  Json json = readJson(text);
  if (!json.is_object()) throw Error("the host's answer is not a JSON object");
  return json;
}

// Of what other clients send, only control requests are known to be harmless.
bool mayChange(const Json& item) {
  const auto request = item.find("json");
  return isAmong(item, "direction", {"received"}) &&
         !(isAmong(item, "kind", {"controlRequest"}) && request != item.end() &&
           onlyReads(*request));
}

// The items of a monitor, and an observer, since the service raises events for observers only.
class Monitor {
 public:
  // limit: how long to wait for a reply.
  Monitor(RemoteClient& control, const std::filesystem::path& socket, milliseconds limit)
      : m_control(control),
        m_limit(limit),
        m_observer(socket),
        m_id(control.startControl(R"({"verb":"monitor"})")) {
    m_begin = required(next(m_limit));
    if (!m_begin.at("begin").value("settled", true)) {
      throw Error(
          "the last changes are not applied yet, since the clock is paused; let time pass, "
          "as with `clock advance 1s`");
    }
    if (m_begin.at("speed") == "max") {
      throw Error(
          "the clock runs at speed max, where years pass between two steps; set a speed, as with "
          "`clock speed 3600`, then record");
    }
    if (!observeEvents(m_observer, m_limit)) throw Error("no reply; the host is busy");
  }

  // The next item; empty: none came within the limit.
  std::optional<Json> next(milliseconds limit) {
    const auto answer = m_control.nextAnswer(m_id, limit);
    if (!answer) return std::nullopt;
    Json json = objectIn(answer->json);
    if (answer->last) throw Error(json.value("error", "the host ended the monitor"));
    return json;
  }

  // Settings and clock, all read before another client changed something.
  RecordedStart start() {
    for (int i = 0; i < kTries; ++i) {
      if (auto start = tryStart()) return *start;
    }
    throw Error("other clients change the telephone all the time; record when they pause");
  }

  // Calls `take` with all items that the host produced before this call. The reply to a `get`,
  // which passes both threads of the host, marks the end.
  template <class Take>
  void readUntilNow(Take take) {
    static_cast<void>(m_control.startControl(R"({"verb":"get","key":"time"})"));
    for (auto item = next(m_limit); item; item = next(m_limit)) {
      if (isOwn(*item) && item->value("kind", "") == "controlReply") return;
      take(*item);
    }
  }

  // Waits until something may have come, a signal did (then false), or the limit has passed.
  bool wait(TerminationSignals& signals, milliseconds limit) {
    std::array<pollfd, 3> polled{{{m_control.descriptor(), POLLIN, 0},
                                  {m_observer.descriptor(), POLLIN, 0},
                                  {signals.descriptor(), POLLIN, 0}}};
    ::poll(polled.data(), polled.size(), static_cast<int>(limit.count()));
    while (m_observer.nextEvent(milliseconds(0))) continue;  // the monitor has them, too
    return !signals.take();
  }

 private:
  static Json required(std::optional<Json> item) {
    if (!item) throw Error("no reply; the host is busy");
    return *std::move(item);
  }

  bool isOwn(const Json& item) const {
    return item.value("origin", "") == m_begin.at("begin").at("origin");
  }

  std::optional<RecordedStart> tryStart() {
    RecordedStart start{m_begin.at("begin"), {}};
    for (const std::string& key : startingKeys()) {
      const Json request = {{"verb", "get"}, {"key", key}};
      const auto reply = m_control.control(request.dump(), m_limit);
      if (!reply) throw Error("no reply; the host is busy");
      start.replies[key] = objectIn(*reply);
    }
    return skipTo(startingKeys().back(), start) ? std::optional(start) : std::nullopt;
  }

  // Skips the items up to the reply about the last key. False: another client changed something.
  bool skipTo(const std::string& lastKey, RecordedStart& start) {
    for (bool quiet = true;;) {
      const Json item = required(next(m_limit));
      if (!isOwn(item)) {
        if (mayChange(item)) quiet = false;
      } else if (item.value("kind", "") == "controlReply" && item.contains("json") &&
                 item["json"].value("key", "") == lastKey) {
        start.wall = item.at("wall");
        start.uptime = item.at("uptime");
        start.running = item.at("speed") != "paused";
        return quiet;
      }
    }
  }

  RemoteClient& m_control;
  const milliseconds m_limit;
  RemoteClient m_observer;
  const std::uint32_t m_id;
  Json m_begin;
};

void follow(const Json& request, TerminationSignals& signals, Monitor& monitor,
            ScenarioRecorder& recorder) {
  const std::size_t count = request.at("count");
  const milliseconds wanted(request.at("for").get<std::int64_t>());
  const TimeLimit limit(wanted.count() > 0 ? std::optional<milliseconds>(wanted) : std::nullopt);
  for (;;) {
    while (const auto item = monitor.next(milliseconds(0))) {
      recorder.add(*item);
      if (recorder.ended() || (count > 0 && recorder.steps() >= count)) return;
    }
    if (limit.over() || !monitor.wait(signals, limit.left())) break;
  }
  monitor.readUntilNow([&](const Json& item) { recorder.add(item); });
}

std::string joined(const std::string& first, const std::string& second) {
  return first.empty() || second.empty() ? first + second : first + "; " + second;
}

// Why the recording is not whole, apart from its replay.
std::string endOf(const ScenarioRecorder& recorder, const std::string& path) {
  std::string ended;
  if (recorder.ended()) {
    ended = "the clock got the speed max, which cannot be recorded; " + quotedText(path) +
            " holds what was done before";
  }
  if (recorder.lost() == 0) return ended;
  return joined(ended, std::to_string(recorder.lost()) + " frames are missing in " +
                           quotedText(path) +
                           ", since they came faster than they could be written");
}

// What the host sent before it died: another connection may have noticed that first.
void addRest(Monitor& monitor, ScenarioRecorder& recorder) try {
  while (const auto item = monitor.next(milliseconds(0))) recorder.add(*item);
} catch (const Error&) {
}

// The host's plug-in; empty when the host belongs to another user, whose plug-in may be anything.
std::string pluginOf(RemoteClient& control, milliseconds limit) {
  const uid_t user = userAt(control.descriptor());
  if (user != 0 && user != ::geteuid()) return {};
  const auto status = control.control(R"({"verb":"status"})", limit);
  if (!status) throw Error("no reply; the host is busy");
  return objectIn(*status).at("plugin");
}

std::string whatDoesNotReplay(RecordedFile& file, const Replayer& replayer, bool whole) {
  return keepWhatReplays(
      file, replayer,
      whole ? "pause the clock, and let one program act at a time" : "let less time pass at once");
}

}  // namespace

void record(const Json& request, RemoteClient& control, const std::filesystem::path& socket,
            milliseconds limit, const std::function<void(const Json&)>& print, std::ostream& err) {
  const std::string path = request.at("file");
  const Replayer replayer = replayerWith(pluginOf(control, limit));
  Monitor monitor(control, socket, limit);
  const RecordedStart start = monitor.start();
  TerminationSignals signals;  // before "ready", after which a script may send one
  RecordedFile file(path, request.at("overwrite"));
  file.add("# Recorded by clockctl record. Run it with: clockhost --scenario FILE");
  ScenarioRecorder recorder(start, [&file](const std::string& line) { file.add(line); });
  err << "ready" << std::endl;
  std::string gone;
  try {
    follow(request, signals, monitor, recorder);
  } catch (const HostGone& error) {
    addRest(monitor, recorder);
    if (!recorder.ended()) {
      gone = error.what() + ("; " + quotedText(path)) + " holds what was done before";
    }
  }
  recorder.finish();
  const bool whole = recorder.lost() == 0;
  if (!gone.empty()) throw HostGone(joined(gone, whatDoesNotReplay(file, replayer, whole)));
  print({{"steps", recorder.steps()}, {"events", recorder.events()}});
  const std::string fault = joined(endOf(recorder, path), whatDoesNotReplay(file, replayer, whole));
  if (!fault.empty()) throw Error(fault);
}

}  // namespace host
