#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "clock/VirtualClock.h"
#include "control/ClockMoves.h"
#include "control/Controller.h"
#include "control/HostActions.h"
#include "control/RecordedAct.h"
#include "control/TimeText.h"
#include "platform/ShownText.h"
#include "runtime/Device.h"
#include "runtime/Error.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr std::int64_t kLongestAdvance = std::int64_t{36525} * 86400;  // seconds: a century

// What stays to be said after an action; empty: nothing.
using Note = std::string;

void requireVirtual(const VirtualClock& clock) {
  if (clock.source() == VirtualClock::Source::system) {
    throw Error("this host runs on the system's clock, at speed 1; start it with --clock virtual");
  }
}

void setWall(VirtualClock& clock, nanoseconds wall) {
  if (clock.setWall(wall)) return;
  throw Error(std::string("the clock cannot be set: ") + std::strerror(errno));
}

Note show(Controller&, const Json&) {
  return {};
}

Note changeSpeed(Controller& controller, const Json& request) {
  const std::string text = textMember(request, "speed");
  const auto speed = parseSpeed(text);
  if (!speed) {
    throw Error(quotedText(text) + " is not a speed; write " + std::string(kSpeedForms));
  }
  requireVirtual(controller.device().clock());
  controller.device().clock().setSpeed(*speed);
  return {};
}

Note pause(Controller& controller, const Json&) {
  requireVirtual(controller.device().clock());
  controller.device().clock().setSpeed(0);
  return {};
}

Note advance(Controller& controller, const Json& request) {
  passTime(controller.device(), seconds(numberMember(request, "seconds", 0, kLongestAdvance)));
  return {};
}

Note next(Controller& controller, const Json&) {
  VirtualClock& clock = controller.device().clock();
  requireVirtual(clock);
  if (!clock.fireNext()) throw Error("no timer is armed: there is nothing to go on to");
  return {};
}

Note jump(Controller& controller, const Json& request) {
  const std::int64_t last = kLastInstant.count();
  setWall(controller.device().clock(), seconds(numberMember(request, "seconds", 0, last)));
  return {};
}

Note goTo(Controller& controller, const Json& request) {
  const std::string name = textMember(request, "landmark");
  const LandmarkName* const row = findLandmark(name);
  if (row == nullptr) throw Error("no place \"" + name + "\" to go to");
  const time_t instant = goBefore(controller.device(), row->landmark);
  return "paused " + std::to_string(kJumpMargin.count()) + " s before " +
         std::string(row->meaning) + ", " + localText(instant) +
         "; go on with `clock advance 10s` or `clock speed 1`";
}

struct ClockAction {
  std::string_view name;
  Note (*carryOut)(Controller& controller, const Json& request);
};

constexpr ClockAction kActions[] = {
    {"show", show}, {"speed", changeSpeed}, {"pause", pause}, {"advance", advance},
    {"next", next}, {"jump", jump},         {"to", goTo},
};

// "Clock jump 2030-05-05T05:05:05Z, from 2016-06-16T00:00:00Z"
std::string described(const VirtualClock& clock, const ClockAction& action, const Json& request) {
  std::string words = memberWords(request, {"speed", "seconds", "landmark"});
  const Json instant = request.value("seconds", Json());
  const bool whole = instant.is_number_integer() && instant >= 0 && instant <= kLastInstant.count();
  if (whole && action.carryOut != advance) words = ' ' + instantText(seconds(instant));
  return "Clock " + std::string(action.name) + words + ", from " +
         instantText(duration_cast<seconds>(clock.wall()));
}

Note recorded(const ClockAction& action, Controller& controller, const Json& request) {
  if (action.carryOut == show) return show(controller, request);
  RecordedAct act(controller.device().securityLog(), SecurityLog::Event::clock,
                  described(controller.device().clock(), action, request));
  Note note = action.carryOut(controller, request);
  act.done();
  return note;
}

// What is left, rounded up as people count.
std::string leftText(nanoseconds duration) {
  return durationText(std::chrono::ceil<seconds>(duration));
}

}  // namespace

Json clockState(Controller& controller) {
  VirtualClock& clock = controller.device().clock();
  const seconds wall = duration_cast<seconds>(clock.wall());
  const char* const zone = std::getenv("TZ");
  Json state = {{"utc", instantText(wall)}, {"local", localText(wall.count())}};
  state["tz"] = zone == nullptr ? "" : zone;
  state["speed"] = speedText(clock.speed());
  state["uptime"] = durationText(duration_cast<seconds>(clock.uptime()));
  state["timers"] = clock.armedTimers();
  if (const auto expiry = clock.nextExpiry()) {
    state["next"] = "in " + leftText(std::max(*expiry - clock.uptime(), nanoseconds::zero()));
  }
  return state;
}

void actOnClock(Controller& controller, const Json& request, const Channel& channel) {
  const std::string name = textMember(request, "action");
  const auto action = std::find_if(std::begin(kActions), std::end(kActions),
                                   [&](const ClockAction& row) { return row.name == name; });
  if (action == std::end(kActions)) throw Error("the clock has no action " + quotedText(name));
  const Note note = recorded(*action, controller, request);
  Json reply = {{"ok", true}};
  reply.update(clockState(controller));
  if (!note.empty()) reply["note"] = note;
  answer(channel, reply);
}

}  // namespace host
