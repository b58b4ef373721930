// What other processes do in a life.

#include "simulation/StepMaker.h"
#include "simulation/model/ClockModel.h"

namespace simulation {
namespace {

using Words = std::vector<std::string>;

const Words kMethods{"getTime",
                     "getTimeInts",
                     "getTimeUTCStr",
                     "getTimeUTCStrAndInts",
                     "getTimeVal",
                     "getDisplayTimeVal",
                     "setTime",
                     "setTime",
                     "setTimeInt",
                     "getDate",
                     "getDateShort",
                     "getDateInts",
                     "getDateUTCStr",
                     "getDateShortUTCStr",
                     "getDateUTCStrAndInts",
                     "setDate",
                     "setDate",
                     "getUTCTimeTimeVal",
                     "getUTCTimeInts",
                     "setAlarmClock",
                     "cancelAlarmClock",
                     "setFallbackTime",
                     "isTimeSourceSntp"};
const Words kUnknown{"convertUtcStringToLocalString", "GetTime", "", "getTime ", "alarmClockEvent"};
const Words kCallers{"peer one", "peer two", "peer three", "stranger"};
const Words kGarbage{"", "garbage", "7:getTime", "7:getTime1:04:name", "999999:x", "7:getTime1:0x"};

}  // namespace

Argument StepMaker::number(const std::string& name, std::int64_t value) {
  return {name, false, static_cast<int>(value), {}};
}

Argument StepMaker::text(const std::string& name, const std::string& value) {
  return {name, true, 0, value};
}

Step StepMaker::call(const ClockModel& model) {
  const std::string method =
      m_chance.oneIn(30) ? m_chance.oneOf(kUnknown) : m_chance.oneOf(kMethods);
  Step step{Act::call, {}, {method, m_chance.oneOf(kCallers), "plain"}, {}};
  argumentsOf(step, model);
  setArguments(step);
  // Sometimes one is missing, or is of the wrong type.
  if (!step.arguments.empty() && m_chance.oneIn(8)) {
    Argument& spoilt = step.arguments[static_cast<std::size_t>(
        m_chance.between(0, static_cast<std::int64_t>(step.arguments.size()) - 1))];
    if (m_chance.oneIn(2))
      spoilt.name += "s";
    else
      spoilt.isText = !spoilt.isText;
  }
  return step;
}

void StepMaker::argumentsOf(Step& call, const ClockModel& model) {
  const std::string& method = call.texts[0];
  auto& arguments = call.arguments;
  if (method.find("UTCStr") != std::string::npos)
    arguments.push_back(text(method + "String", utc(model)));
  if (method == "getUTCTimeTimeVal") {
    const std::int64_t seconds = m_chance.oneIn(3) ? m_chance.between(-1, 1) : anySecond();
    arguments.push_back(number("getUTCTimeTimeValTime", seconds));
  }
  if (method == "getUTCTimeInts") {
    for (const char* const name : {"Hours", "Mins", "Secs", "Day", "Month"})
      arguments.push_back(number(method + name, m_chance.between(-1, 60)));
    arguments.push_back(number(method + "Year", m_chance.between(-5, 200)));
  }
  if (method == "setAlarmClock") arguments.push_back(text("setAlarmClockAlarmTime", utc(model)));
  if (method == "cancelAlarmClock") arguments.push_back(number("cancelAlarmClockAlarmId", 1));
  if (method == "setTimeInt") arguments.push_back(number("setTime", aroundMs(model) / 1000));
}

void StepMaker::setArguments(Step& call) {
  const std::string& method = call.texts[0];
  if (method == "setTime") {
    call.arguments = {number("setTimeHours", m_chance.between(-1, 24)),
                      number("setTimeMinutes", m_chance.between(-1, 60)),
                      number("setTimeSeconds", m_chance.between(-1, 60))};
  }
  if (method == "setDate") {
    call.arguments = {number("setDateDay", m_chance.between(0, 32)),
                      number("setDateMonth", m_chance.between(0, 13)),
                      number("setDateYear", m_chance.oneIn(3) ? m_chance.between(0, 99)
                                                              : m_chance.between(1968, 2036))};
  }
}

Step StepMaker::remoteObserver(const ClockModel&) {
  const char* const method = m_chance.oneIn(2) ? "unobserveTimeEvents" : "observeTimeEvents";
  return {Act::call, {}, {method, m_chance.oneOf(kCallers), "plain"}, {}};
}

Step StepMaker::badCall(const ClockModel&) {
  if (m_chance.oneIn(3)) return {Act::garbage, {}, {m_chance.oneOf(kGarbage), "peer one"}, {}};
  if (m_chance.oneIn(2)) return {Act::callNobody, {}, {m_chance.oneOf(kMethods), "peer one"}, {}};
  return {Act::call, {}, {m_chance.oneOf(kMethods), "peer two", "morse"}, {}};
}

}  // namespace simulation
