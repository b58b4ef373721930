#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "verbs/Json.h"

namespace host {

class ControlChannel;
class Controller;
class Device;

using Channel = std::shared_ptr<ControlChannel>;

// What the host does for one verb, or for one action of a verb. An exception is answered as a
// refusal. Called on the framework thread; answers then or later, once.
using HostAction = void(Controller& controller, const Json& request, const Channel& channel);

// Does what the request's verb and action stand for. Throws host::Error for unknown ones.
HostAction carryOut;

HostAction actOnGet, actOnSet, actOnReset, actOnKeys, actOnStatus, actOnHistory, actOnLog,
    actOnLogLevel, actOnSecurityLog, actOnMonitor, actOnUpcoming;
HostAction actOnClockShow, actOnClockSpeed, actOnClockPause, actOnClockAdvance, actOnClockNext,
    actOnClockJump, actOnClockTo;
HostAction actOnInjectJack, actOnInjectNetwork, actOnInjectDhcp, actOnInjectMobility,
    actOnInjectUserData, actOnInjectValue;

// The one instant of a local time under the zone of the device. Throws host::Error: a zone that is
// not applied yet, another form, skipped by daylight saving, comes twice, or outside the years
// 1970-2199.
[[nodiscard]] std::chrono::seconds instantOfLocalTime(Device& device, const std::string& text);

// The answer to `clock show`.
[[nodiscard]] Json clockState(Controller& controller);

// Answers with clockState, and with the note unless it is empty.
void answerClock(Controller& controller, const Channel& channel, const std::string& note);

// Answers. Invalid UTF-8 becomes U+FFFD. An answer that is too long for a reply becomes a refusal
// that says so.
void answer(const Channel& channel, const Json& reply);
void answerDone(const Channel& channel);
void answerRefusal(const Channel& channel, const std::string& error);  // as one line
[[nodiscard]] std::string jsonText(const Json& json);

// As many of the last, or of the first, rows as fit into a reply, in their order.
[[nodiscard]] Json newestThatFit(const std::vector<Json>& rows);
[[nodiscard]] Json oldestThatFit(const std::vector<Json>& rows);

// Members of a request. Throw host::Error, naming the member, when it is missing, of another type
// or out of range.
[[nodiscard]] std::string textMember(const Json& request, const char* name);
[[nodiscard]] std::int64_t numberMember(const Json& request, const char* name, std::int64_t least,
                                        std::int64_t most);

}  // namespace host
