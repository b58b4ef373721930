#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "base/Error.h"
#include "base/Origin.h"
#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "operator/AuditRecord.h"
#include "operator/ClockMoves.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "runtime/Device.h"
#include "verbs/Choices.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr std::int64_t kLongestAdvance = std::int64_t{36525} * 86400;  // seconds: a century

void requireVirtual(const VirtualClock& clock) {
  if (clock.source() == VirtualClock::Source::system) {
    throw Error("this host runs on the system's clock, at speed 1; start it with --clock virtual");
  }
}

// "Clock jump 2030-05-05T05:05:05Z, from 2016-06-16T00:00:00Z"
std::string described(const VirtualClock& clock, const Json& request) {
  const std::string action = textMember(request, "action");
  std::string words = memberWords(request, {"speed", "seconds", "landmark"});
  if (request.contains("microseconds")) {
    words = memberWords(request, {"microseconds"}) + " microseconds";
  }
  const Json instant = request.value("seconds", Json());
  const bool whole = instant.is_number_integer() && instant >= 0 && instant <= kLastInstant.count();
  if (whole && action != "advance") words = ' ' + instantText(seconds(instant));
  if (request.contains("local")) words = " local" + memberWords(request, {"local"});
  return "Clock " + action + words + ", from " + instantText(duration_cast<seconds>(clock.wall()));
}

std::shared_ptr<AuditRecord> recordOf(Controller& controller, const Json& request) {
  return std::make_shared<AuditRecord>(controller.device().securityLog(), SecurityLog::Event::clock,
                                       described(controller.device().clock(), request));
}

// The record is written before the answer.
template <typename Change>
void changeAtOnce(Controller& controller, const Json& request, const Channel& channel, Change act) {
  auto record = recordOf(controller, request);
  act(controller.device().clock());
  record->done();
  record.reset();
  answerClock(controller, channel, "");
}

// The record is written when the move has arrived, or is dropped on its way.
template <typename MoveOf>
ClockMove recordedMove(Controller& controller, const Json& request, MoveOf moveOf) {
  const auto record = recordOf(controller, request);
  ClockMove move = moveOf(controller.device());
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

void requireInRange(const std::string& local, seconds instant) {
  if (instant < seconds(0)) {
    throw Error("local time " + local + " is before 1970-01-01 UTC; write a later one");
  }
  if (instant > kLastInstant) {
    throw Error("local time " + local + " is after the year 2199 UTC; write an earlier one");
  }
}

// Until then the process's TZ is the zone before.
void requireAppliedZone(Device& device) {
  const std::vector<NamedTimer> timers = device.timers();
  const bool applied = std::none_of(timers.begin(), timers.end(), [](const NamedTimer& timer) {
    return timer.name == kZoneRefresh;
  });
  if (applied) return;
  const bool paused = device.clock().speed() == 0;
  throw Error(std::string("the zone that was set is not applied yet; ") +
              (paused ? "let time pass, as with `clock advance 1s`, then" : "in a moment") +
              " write the local time again");
}

}  // namespace

seconds instantOfLocalTime(Device& device, const std::string& text) {
  requireAppliedZone(device);
  const auto local = parseLocal(text);
  if (!local) {
    throw Error(quotedText(text) + " is not a local time; write " + std::string(kLocalForms));
  }
  const std::vector<seconds> instants = instantsOfLocal(*local);
  if (instants.empty()) {
    throw Error("local time " + text + " is skipped by daylight saving; write a time outside it");
  }
  if (instants.size() > 1) {
    throw Error("local time " + text + " comes twice; write " + instantText(instants.front()) +
                " or " + instantText(instants.back()));
  }
  requireInRange(text, instants.front());
  return instants.front();
}

namespace {

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

void actOnClockShow(Controller& controller, const Json&, const Channel& channel) {
  answerClock(controller, channel, "");
}

void actOnClockSpeed(Controller& controller, const Json& request, const Channel& channel) {
  changeAtOnce(controller, request, channel, [&](VirtualClock& clock) {
    const std::string text = textMember(request, "speed");
    const auto speed = parseSpeed(text);
    if (!speed) {
      throw Error(quotedText(text) + " is not a speed; write " + std::string(kSpeedForms));
    }
    requireVirtual(clock);
    clock.setSpeed(*speed);
  });
}

void actOnClockPause(Controller& controller, const Json& request, const Channel& channel) {
  changeAtOnce(controller, request, channel, [](VirtualClock& clock) {
    requireVirtual(clock);
    clock.setSpeed(0);
  });
}

void actOnClockAdvance(Controller& controller, const Json& request, const Channel& channel) {
  const auto advance = [&](Device& device) {
    if (!request.contains("microseconds")) {
      return passTime(device, seconds(numberMember(request, "seconds", 0, kLongestAdvance)));
    }
    constexpr std::int64_t kLongest = kLongestAdvance * 1'000'000;
    return passExactly(
        device, std::chrono::microseconds(numberMember(request, "microseconds", 0, kLongest)));
  };
  controller.moves().add(recordedMove(controller, request, advance), channel);
}

void actOnClockNext(Controller& controller, const Json& request, const Channel& channel) {
  changeAtOnce(controller, request, channel, [](VirtualClock& clock) {
    requireVirtual(clock);
    if (!clock.fireNext()) throw Error("no timer is armed");
    clock.advance(nanoseconds::zero());  // the others due then, before a client's next step
  });
}

void actOnClockJump(Controller& controller, const Json& request, const Channel& channel) {
  changeAtOnce(controller, request, channel, [&](VirtualClock& clock) {
    const bool local = request.contains("local");
    const seconds instant =
        local ? instantOfLocalTime(controller.device(), textMember(request, "local"))
              : seconds(numberMember(request, "seconds", 0, kLastInstant.count()));
    const CauseScope cause({"clock", "jump"});
    if (clock.setWall(instant)) return;
    throw Error(std::string("the clock cannot be set: ") + std::strerror(errno));
  });
}

void actOnClockTo(Controller& controller, const Json& request, const Channel& channel) {
  const auto goTo = [&](Device& device) {
    const std::string name = textMember(request, "landmark");
    const Landmark* const landmark = rowNamed(landmarks(), name);
    if (landmark != nullptr) return moveBefore(device, *landmark);
    throw Error("unknown landmark " + quotedText(name) + "; write " +
                alternatives(namesOf(landmarks())));
  };
  controller.moves().add(recordedMove(controller, request, goTo), channel);
}

}  // namespace host
