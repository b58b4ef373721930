#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "operator/ClockMoves.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "operator/RecordedAct.h"
#include "runtime/Device.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/VerbTable.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr std::int64_t kLongestAdvance = std::int64_t{36525} * 86400;  // seconds: a century

// A note for the reply; empty: none.
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

Note next(Controller& controller, const Json&) {
  VirtualClock& clock = controller.device().clock();
  requireVirtual(clock);
  if (!clock.fireNext()) throw Error("no timer is armed");
  return {};
}

Note jump(Controller& controller, const Json& request) {
  const std::int64_t last = kLastInstant.count();
  setWall(controller.device().clock(), seconds(numberMember(request, "seconds", 0, last)));
  return {};
}

ClockMove advance(Controller& controller, const Json& request) {
  return passTime(controller.device(),
                  seconds(numberMember(request, "seconds", 0, kLongestAdvance)));
}

ClockMove goTo(Controller& controller, const Json& request) {
  const std::string name = textMember(request, "landmark");
  const Landmark* const landmark = rowNamed(landmarks(), name);
  if (landmark == nullptr) {
    throw Error("unknown landmark " + quotedText(name) + "; write " + landmarkNames());
  }
  return goBefore(controller.device(), *landmark);
}

// One action of `clock`: done at once, or a move, which lasts as long as timers expire on the way.
struct ClockAction {
  std::string_view name;
  Note (*act)(Controller& controller, const Json& request);
  ClockMove (*move)(Controller& controller, const Json& request) = nullptr;
};

constexpr ClockAction kClockHandlers[] = {
    {"show", show}, {"speed", changeSpeed}, {"pause", pause},      {"advance", nullptr, advance},
    {"next", next}, {"jump", jump},         {"to", nullptr, goTo},
};
static_assert(sameNames(kClockHandlers, kClockActions), "a row for each action of VerbTable.h");

// "Clock jump 2030-05-05T05:05:05Z, from 2016-06-16T00:00:00Z"
std::string described(const VirtualClock& clock, const Json& request) {
  const std::string action = textMember(request, "action");
  std::string words = memberWords(request, {"speed", "seconds", "landmark"});
  const Json instant = request.value("seconds", Json());
  const bool whole = instant.is_number_integer() && instant >= 0 && instant <= kLastInstant.count();
  if (whole && action != "advance") words = ' ' + instantText(seconds(instant));
  return "Clock " + action + words + ", from " + instantText(duration_cast<seconds>(clock.wall()));
}

std::shared_ptr<RecordedAct> recordOf(Controller& controller, const Json& request) {
  return std::make_shared<RecordedAct>(controller.device().securityLog(), SecurityLog::Event::clock,
                                       described(controller.device().clock(), request));
}

Note recordedAct(const ClockAction& action, Controller& controller, const Json& request) {
  if (action.act == show) return show(controller, request);
  const auto record = recordOf(controller, request);
  Note note = action.act(controller, request);
  record->done();
  return note;
}

// The record is written when the move has arrived, or is dropped on its way.
ClockMove recordedMove(const ClockAction& action, Controller& controller, const Json& request) {
  const auto record = recordOf(controller, request);
  ClockMove move = action.move(controller, request);
  move.begin = [record, begin = std::move(move.begin), &clock = controller.device().clock()] {
    const nanoseconds target = begin();
    record->begun(
        [&clock] { return ", stopped at " + instantText(duration_cast<seconds>(clock.wall())); });
    return target;
  };
  move.arrive = [record, arrive = std::move(move.arrive)] {
    std::string note = arrive();
    record->done();
    return note;
  };
  return move;
}

// Rounded up: less than a second left is shown as one.
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

void answerClock(Controller& controller, const Channel& channel, const std::string& note) {
  Json reply = {{"ok", true}};
  reply.update(clockState(controller));
  if (!note.empty()) reply["note"] = note;
  answer(channel, reply);
}

void actOnClock(Controller& controller, const Json& request, const Channel& channel) {
  const std::string name = textMember(request, "action");
  const ClockAction* const action = rowNamed(kClockHandlers, name);
  if (action == nullptr) throw Error("the clock has no action " + quotedText(name));
  if (action->move != nullptr) {
    return controller.passages().add(recordedMove(*action, controller, request), channel);
  }
  answerClock(controller, channel, recordedAct(*action, controller, request));
}

}  // namespace host
