#pragma once

#include <optional>
#include <string>
#include <vector>

#include "verbs/Json.h"

// What a client did, in the words of a scenario. Pure; thread: any.
namespace host {

// The words on one line; a word is quoted where a scenario needs it.
[[nodiscard]] std::string lineOf(const std::vector<std::string>& words);

// A step of a recorded scenario. note: why a scenario cannot hold it; then `line` is for people.
struct RecordedStep {
  std::string line{};
  std::string note{};
};

// A call and its reply: objects with `method` and `parameters`; no reply: null. certain: its values
// may be expected. Empty: not a part of a scenario.
[[nodiscard]] std::optional<RecordedStep> recordedCall(const Json& call, const Json& reply,
                                                       bool certain);

// A control request and its reply. Empty for verbs that change nothing, other than `get`.
[[nodiscard]] std::optional<RecordedStep> recordedRequest(const Json& request, const Json& reply,
                                                          bool certain);

// The same for an event.
enum class EventTime { exact, late, unknown };
[[nodiscard]] RecordedStep recordedEvent(const Json& event, EventTime time);

}  // namespace host
