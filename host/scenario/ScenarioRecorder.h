#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "scenario/RecordedWords.h"
#include "verbs/Json.h"

namespace host {

// Where a recording begins.
struct RecordedStart {
  Json device;                          // the member `begin` of a monitor's first item
  std::map<std::string, Json> replies;  // to `get KEY`, for the keys of startingKeys()
  std::int64_t wall = 0;                // microseconds since 1970-01-01 UTC
  std::int64_t uptime = 0;              // microseconds
  bool running = false;                 // the clock
};

// The keys whose values bring another telephone to the same settings, and `time`.
[[nodiscard]] std::vector<std::string> startingKeys();

// Turns the items of a monitor (the control request `monitor`) into a scenario: first the lines
// that bring a new telephone to the recorded settings, clock and zone, then what clients did, in
// the order in which it was done, and the events that came. What the recording client itself did is
// left out; the events are those that it observes. The clock of the replay is paused: passed time
// is an exact `clock advance`. Owner: its creator. Thread: one. Failure: Json::exception for
// entries of another shape.
class ScenarioRecorder {
 public:
  using Write = std::function<void(const std::string& line)>;

  ScenarioRecorder(const RecordedStart& start, Write write);

  void add(const Json& entry);

  // Writes what still waits for an answer. Call once, at the end.
  void finish();

  [[nodiscard]] std::size_t steps() const { return m_steps; }
  [[nodiscard]] std::size_t events() const { return m_events; }
  [[nodiscard]] std::uint64_t lost() const { return m_lost; }  // frames: the recording has a gap
  // The clock got the speed max, where years pass between two steps: later entries are ignored.
  [[nodiscard]] bool ended() const { return m_ended; }

 private:
  struct Request {
    Json entry;
    bool alone = true;  // no other step came before its answer
  };

  void begin(const RecordedStart& start);
  void beginWith(const std::string& key, const Json& reply);
  void addReceived(const Json& entry);
  void addSent(const Json& entry);
  void endCall(const Json& reply);
  void endRequest(Request request, const Json& entry);
  void endMove(const Request& request, const Json& entry, const RecordedStep& step);
  void watchWall(const Json& entry);
  void watchHand(const Json& request, const Json& reply);
  void writeStep(const Json& request, const RecordedStep& step, std::int64_t effect);
  void writeEvents(std::int64_t end = std::numeric_limits<std::int64_t>::max());
  void writeEvent(const std::string& line, bool running);
  void passTo(std::int64_t uptime);
  [[nodiscard]] bool moves() const;  // the clock, by a request without an answer yet
  [[nodiscard]] bool pending() const { return m_call || !m_requests.empty(); }
  [[nodiscard]] bool isCertain(const Json& request, const Json& reply) const;

  const std::string m_self;  // the recorder's process
  const Write m_write;
  std::int64_t m_replay;       // the uptime that the replay has reached, in microseconds
  std::int64_t m_offset;       // of the wall clock from the uptime
  bool m_approximate;          // the replay shows another part of a second
  bool m_changing = false;     // a client's step may have set the wall clock since the last entry
  std::optional<Json> m_call;  // without a reply yet
  std::vector<Request> m_requests;
  std::vector<Json> m_waiting;      // events
  std::vector<std::string> m_late;  // their lines while the clock ran, since a step or a second
  std::string m_peer;               // of the last step
  std::size_t m_steps = 0;
  std::size_t m_events = 0;
  std::uint64_t m_lost = 0;
  bool m_ended = false;
};

}  // namespace host
